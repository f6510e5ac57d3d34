// Solved endgames with all their distances, and what they are held against: the engine's probes of
// table files.
#pragma once

#include "file/table_file.h"
#include "solver/solver.h"
#include "tablebase/probe_board.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace brindlemoth {

struct SolvedTable {
    std::vector<tablegen::Part> parts;
};

// Endgames with what they convert into.
struct SolvedSet {
    int limit = tablegen::FIFTY_MOVES;
    tablegen::TableSet tables;
    std::map<std::string, SolvedTable> solved;
};

// Solves a signature and all that it converts into, as far as the set has them not.
const SolvedTable& solve_into(SolvedSet& set, const std::string& name, int threads = 2);

// The cell of a placement in the slots of the table's layout.
tablegen::Cell cell_at(const SolvedTable& table, const tablegen::Placement& placement,
                       tablegen::Side side);

// That of a board that has the table's first-named side as white.
tablegen::Cell cell_of_board(const SolvedTable& table, const ProbeBoard& board);

// Makes a file of a table, and writes both.
tablegen::TableFile make_file(const SolvedTable& table, tablegen::FileKind kind);
void write_files(const SolvedTable& table, const std::string& directory);

struct Comparison {
    std::uint64_t positions = 0;
    std::uint64_t wrong_wdl = 0;
    std::uint64_t wrong_dtz = 0;
    std::string first_wrong;
};

// Probes legal positions of the table's signature, one in so many or all, in the directory that
// syzygy_init() was given. A distance may come out one ply short, as a stream may count moves.
Comparison compare_with_engine(const SolvedTable& table, unsigned one_in);

} // namespace brindlemoth
