// The index of a position in a table. Positions that are equal by the symmetry of the board have
// the same index. The order of the men and their weights come from the table (SideEncoding), so the
// same code serves all tables. Used by the mapper for the sizes of tables and by the probes.
#pragma once

#include "tablebase/probe_board.h"
#include "tablebase/table_entry.h"

#include <cstdint>

namespace brindlemoth {

// Placements of the first group of a table without pawns: two kings, or three men of different
// kinds.
constexpr std::uint64_t TWO_KING_PLACEMENTS = 462;
constexpr std::uint64_t THREE_MEN_PLACEMENTS = 31332;
// The index of a placement that no table contains, such as adjacent kings.
constexpr std::uint64_t NO_INDEX = ~std::uint64_t{0};

extern std::uint64_t binomial[7][64];   // [k][n]: the binomial coefficient n over k
extern std::uint64_t pawn_index[6][24]; // [leading pawns - 1][slot of the leading pawn]
extern std::uint64_t pawn_factor[6][4]; // placements: [leading pawns - 1][file position]

// Fills the three tables above. Called once, by the first syzygy_init().
void syzygy_build_index_tables();

// Writes the squares of the men into `squares[start]` to `squares[places - 1]`, in the order of the
// encoding, each XORed with `mask`. With `flip` the colours are exchanged. Requires that the board
// holds the men of the encoding, and that `places` does not divide men of one kind. Returns
// `places`.
int syzygy_collect_squares(const ProbeBoard& board, const SideEncoding& encoding, int start,
                           int places, bool flip, int mask, int squares[MAX_TABLE_MEN]);

// Exchanges the leading pawn into place 0 and returns its file position.
int syzygy_pick_lead_pawn(int squares[MAX_TABLE_MEN], int lead_pawns);

// Returns the index of the men on `squares`, or NO_INDEX. Mirrors and sorts the squares.
std::uint64_t syzygy_position_index(int squares[MAX_TABLE_MEN], const SideEncoding& encoding,
                                    const TableEntry& entry);

} // namespace brindlemoth
