// Tells the user how far the work is: a line that changes in place on a terminal (table, per cent,
// time left); in a log plain lines, when a table has taken a few seconds, each minute
// from then on, and when it is finished. Standard output. The share that is shown never falls.
#pragma once

#include <chrono>
#include <string>

namespace brindlemoth::tablegen {

struct ProgressLine {
    bool terminal = false;
    double total = 0;   // of the work, in any unit
    double before = 0;  // done with earlier tables
    double current = 0; // the current table's share
    double share = 0;   // of the total that was done at the last call
    std::string table;
    bool named = false; // the table has had its line in a log
    std::chrono::steady_clock::time_point start;
    std::chrono::steady_clock::time_point table_start;
    std::chrono::steady_clock::time_point shown;
};

ProgressLine start_progress(double total);

// The next table's turn; `work` is its share of the total.
void begin_table(ProgressLine& line, const std::string& table, double work);

// How much of the current table's share is done, from 0 to 1.
void show_progress(ProgressLine& line, double done);

// A number of seconds: 12.3 s, or 2:03, or 1:02:03 from a minute on.
std::string duration_text(double seconds);

// Prints a line that stays, in place of the changing one.
void print_line(const std::string& text);

// Takes the changing line off the terminal, before a message.
void clear_progress();

} // namespace brindlemoth::tablegen
