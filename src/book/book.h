// The opening book: a file in the Polyglot format, held whole in memory, and the weighted choice
// of a move from it. The options load it and switch it on and off, the go command asks it.
// Nothing here prints anything.
#pragma once

#include "board/position.h"

#include <cstdint>

namespace brindlemoth {

struct BookEntry {
    std::uint64_t key;    // polyglot_key() of the position
    std::uint16_t move;   // in the book's own layout, see book_probe.cpp
    std::uint16_t weight; // relative frequency; 0 is never played
};

// The book in memory, sorted by key as the file is, or nullptr. Owned by book_load.cpp.
extern BookEntry* book_entries;
extern int book_entry_count;
// Whether the book may be asked. It can be on with no book loaded.
extern bool own_book;

// Drops the old book, reads the file, switches the book on and seeds rand(). Returns true when a
// book is in force afterwards; on failure there is none and own_book is false.
bool book_load(const char* path);

// A random move of the book for the position, by the stored weights: legal, or MOVE_NONE when the
// book is off or has nothing to say. The position is unchanged afterwards.
Move book_probe(Position& position);

} // namespace brindlemoth
