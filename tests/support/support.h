// What the test programs share: positions to test on and the way to them. The tables of the
// engine are filled before any test runs (support/main.cpp).
#pragma once

#include "board/position.h"

#include <cstdint>
#include <functional>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace brindlemoth {

using Lines = std::vector<std::string>;

// A position set up from a FEN text.
Position position_from(const std::string& fen);

// The directory of shared test data (published tables, positions), or an empty text when it is not
// there. It only adds to what the tests check.
std::string shared_directory();

// The directory of the tables of 3 and 4 men that tablegen has made for the tests. Only a build
// without tablegen may lack them.
std::string tables_directory();

// Positions to start random games from: the shared collection when it is there, otherwise a
// few of our own.
const std::vector<std::string>& sample_fens();

// Plays random legal games from sample_fens() with a fixed seed until `count` positions were
// visited, and calls visit() on each. visit() may change the position only if it restores it. The
// first failure ends the walk and is reported with the moves that lead to its position.
void for_random_positions(int count, std::uint64_t seed,
                          const std::function<void(Position&)>& visit);

// A FEN with one of these letters on each square, '1' for an empty one; every castling right, an
// en-passant square and a side to move, whether they make sense or not.
std::string strewn_fen(std::mt19937_64& random, std::string_view men);

// The legal move of that text, or MOVE_NONE.
Move legal_move(const Position& position, const std::string& text);

// Whether all of the two records is equal but the undo entries that are not in use.
bool same_position(const Position& a, const Position& b);

} // namespace brindlemoth
