// Solves an endgame from nothing by retrograde analysis: see solver/table.h for what comes out.
#pragma once

#include "solver/table.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <span>

namespace brindlemoth::tablegen {

// Told how much of the work is done, from 0 to 1. Called from one thread at a time.
using Progress = std::function<void(double)>;

// Solves a signature on that many threads. Everything that it converts into must be in the set;
// the new table is added to it and returned. `limit` is that of the fifty-move rule, in plies,
// the same for all tables of a set: with a low one small endgames have spoilt wins too. Throws
// std::runtime_error where a distance is beyond what the table has room for.
Table& solve(const Signature& signature, TableSet& solved, int threads,
             const Progress& progress = {}, int limit = FIFTY_MOVES);

// Solves the signature and whatever it needs that the set has not.
Table& solve_closure(const Signature& signature, TableSet& solved, int threads,
                     int limit = FIFTY_MOVES);

// Takes out of the set what none of the signatures still to be solved converts into.
void drop_unneeded(TableSet& tables, std::span<const Signature> to_come);

// What a whole table holds, over both sides to move, all reflections counted and like men not
// told apart. A position counts once more for each double step that may just have been played
// and that an enemy pawn stands ready to capture.
struct TableCounts {
    std::uint64_t legal = 0;
    std::uint64_t en_passant = 0; // of the legal ones
    std::uint64_t not_drawn = 0;
    std::uint64_t mated = 0;

    bool operator==(const TableCounts&) const = default;
};
// Requires a table that still has its distances.
TableCounts count_positions(const Table& table, int threads);

// Calls visit(slot) for each double step that may have led to this position: the slot of the
// pawn that may just have made it, with an enemy pawn ready to capture. Requires a legal position.
void for_en_passant(const Table& table, const Placement& placement, Side side,
                    const std::function<void(std::size_t)>& visit);

} // namespace brindlemoth::tablegen
