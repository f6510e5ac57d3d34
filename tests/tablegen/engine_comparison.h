// Holds solved endgames and the engine's probes of table files against each other.
#pragma once

#include "solver/solver.h"
#include "tablebase/probe_board.h"

#include <cstdint>
#include <string>

namespace brindlemoth {

struct Comparison {
    std::uint64_t positions = 0;
    std::uint64_t wrong_wdl = 0;
    std::uint64_t wrong_dtz = 0;
    std::uint64_t exact_dtz = 0; // read from streams that count plies
    std::string first_wrong;
};

// Probes every legal position of the table's signature, with en passant where that is possible,
// in the directory that syzygy_init() was given. A distance may come out one ply short where the
// stream that it is read from counts moves; it is exact where the stream counts plies.
Comparison compare_with_engine(const tablegen::Table& table, const std::string& directory);

// Makes both files of a solved endgame.
void write_table(const tablegen::Table& table, const std::string& directory, int threads);

// Plays the tables' root move in that many random positions of those men from either directory's
// files. Returns how many of them differ.
int count_different_root_moves(const std::vector<tablegen::Signature>& signatures, int positions,
                               const std::string& one, const std::string& other);

} // namespace brindlemoth
