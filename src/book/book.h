// The opening book: a file in the Polyglot format, which is read into memory as a whole, and the
// random choice of a move by the weights in the file. The options load the book and turn it on and
// off; the go command asks it for a move. Nothing here prints anything.
#pragma once

#include "board/position.h"

#include <cstdint>

namespace brindlemoth {

struct BookEntry {
    std::uint64_t key;    // polyglot_key() of the position
    std::uint16_t move;   // in the layout of the file, see book_probe.cpp
    std::uint16_t weight; // relative frequency; a move of weight 0 is never chosen
};

// The records of the book in the order of the file, which is sorted by key, or nullptr. book_load()
// allocates and releases them.
extern BookEntry* book_entries;
extern int book_entry_count;
// Whether book_probe() may answer. This can be true with no book loaded.
extern bool own_book;

// Releases the old book and reads the file. On success turns the book on, seeds rand() and returns
// true. On failure no book is loaded, own_book is false, and it returns false.
bool book_load(const char* path);

// Returns a legal move of the book, chosen at random by the weights. Returns MOVE_NONE if the book
// is off, does not contain the position, or the chosen move is not legal.
Move book_probe(const Position& position);

} // namespace brindlemoth
