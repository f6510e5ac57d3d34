// Small books for the tests, and temporary directories.
#pragma once

#include "board/position.h"

#include <cstdint>
#include <string>
#include <vector>

namespace brindlemoth {

// One record of a book file. The learn field is written as all ones: nobody may read it.
struct BookRecord {
    std::uint64_t key;
    int move; // see book_move()
    int weight;
};

// A move in the file's layout: from, to and a promotion from 0 (none), 1 (knight) to 4 (queen).
int book_move(int from, int to, int promotion = 0);

// The bytes of the records in the order given.
std::string book_bytes(const std::vector<BookRecord>& records);

// A fresh directory for the length of a scope.
struct TemporaryDirectory {
    TemporaryDirectory();
    ~TemporaryDirectory();
    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

    // The path of a file there.
    std::string file(const std::string& name) const { return path + "/" + name; }
    // Writes a file there and returns its path. The name is UTF-8.
    std::string write(const std::string& name, const std::string& bytes) const;

    std::string path;
};

// Writes the records as a book, loads it and removes the file. Returns what book_load() said.
bool load_records(const std::vector<BookRecord>& records);

} // namespace brindlemoth
