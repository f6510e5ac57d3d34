// Solved endgames with all their distances, and what they are held against: the moves of each
// position, and the engine's probes of table files.
#pragma once

#include "file/table_file.h"
#include "solver/solver.h"
#include "tablebase/probe_board.h"

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace brindlemoth {

struct SolvedTable {
    std::vector<tablegen::Part> parts;

    const tablegen::Layout& layout() const { return parts[0].table.layout; }
};

// Endgames with what they convert into.
struct SolvedSet {
    int limit = tablegen::FIFTY_MOVES;
    tablegen::TableSet tables;
    std::map<std::string, SolvedTable> solved;
};

// Solves a signature and all that it converts into, as far as the set has them not.
const SolvedTable& solve_into(SolvedSet& set, const std::string& name, int threads = 3);

// The same in a set that all tests share.
SolvedSet& shared_set();
const SolvedTable& solved_table(const std::string& name);

// The outcome of a board that has the table's first-named side as white.
tablegen::Outcome outcome_of_board(const SolvedTable& table, const ProbeBoard& board);

// The distance of a board, in a set that has its table, by the best of its moves.
int distance_by_moves(const SolvedSet& set, const ProbeBoard& board);

// Visits the legal positions of one in so many words, drawn at random, with their outcomes.
void for_positions(const SolvedTable& table, unsigned one_in,
                   const std::function<void(const ProbeBoard&, tablegen::Outcome)>& visit);

// Writes the two files of a table.
void write_files(const SolvedTable& table, const std::string& directory);

// Probes positions of a shared table, one word in so many, in the directory that syzygy_init() was
// given, and returns the number of wrong answers. Those in which a pawn can be captured en passant
// are judged by their moves. A distance may come out one ply short, as a stream may count moves.
int wrong_answers(const std::string& name, unsigned one_in, std::string& first_wrong);

// Expects none.
void expect_engine_agrees(const std::string& name, unsigned one_in);

} // namespace brindlemoth
