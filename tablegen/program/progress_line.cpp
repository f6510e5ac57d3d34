#include "program/progress_line.h"

#include "system/system.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace brindlemoth::tablegen {

using Clock = std::chrono::steady_clock;

constexpr auto BETWEEN_UPDATES = std::chrono::milliseconds(200);
constexpr auto BEFORE_LOG_LINE = std::chrono::seconds(5); // of a table
constexpr auto BETWEEN_LOG_LINES = std::chrono::seconds(60);

ProgressLine start_progress(double total) {
    ProgressLine line;
    line.terminal = output_is_terminal();
    line.total = total;
    line.start = Clock::now();
    return line;
}

void begin_table(ProgressLine& line, const std::string& table, double work) {
    line.before += line.current;
    line.current = work;
    line.table = table;
    line.table_start = Clock::now();
    line.named = false;
    line.shown = {}; // each table is named at once on a terminal
    show_progress(line, 0);
}

// Hours, minutes and seconds as people write them: 1:02:03 or 2:03.
static std::string clock_text(double seconds) {
    const long whole = std::lround(std::min(seconds, 1e7));
    char text[32];
    if (whole >= 3600) {
        std::snprintf(text, sizeof text, "%ld:%02ld:%02ld", whole / 3600, whole / 60 % 60,
                      whole % 60);
    } else {
        std::snprintf(text, sizeof text, "%ld:%02ld", whole / 60, whole % 60);
    }
    return text;
}

std::string duration_text(double seconds) {
    if (seconds >= 60)
        return clock_text(seconds);
    char text[32];
    std::snprintf(text, sizeof text, "%.1f s", seconds);
    return text;
}

void show_progress(ProgressLine& line, double done) {
    line.share = std::max(line.share, (line.before + line.current * done) / line.total);
    const Clock::time_point now = Clock::now();
    if (!line.terminal && !line.named) {
        if (now - line.table_start < BEFORE_LOG_LINE)
            return;
        line.named = true;
        line.shown = now;
        print_line(line.table + ": begun");
    }
    if (now - line.shown < (line.terminal ? BETWEEN_UPDATES : BETWEEN_LOG_LINES))
        return;
    line.shown = now;
    const double elapsed = std::chrono::duration<double>(now - line.start).count();
    const std::string left =
        line.share > 0.001 ? clock_text(elapsed * (1 - line.share) / line.share) : "?";
    std::printf(line.terminal ? "\r\033[K%s  %.0f%%  %s left" : "%s: %.0f%% of all, %s left\n",
                line.table.c_str(), 100 * line.share, left.c_str());
    std::fflush(stdout);
}

void clear_progress() {
    if (output_is_terminal()) {
        std::printf("\r\033[K");
        std::fflush(stdout);
    }
}

void print_line(const std::string& text) {
    clear_progress();
    std::printf("%s\n", text.c_str());
    std::fflush(stdout);
}

} // namespace brindlemoth::tablegen
