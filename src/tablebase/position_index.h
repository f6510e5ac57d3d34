// The dense numbering of the positions of a signature, with everything removed that the symmetry
// of the board makes equal. The weights come from the table's own order of men (SideEncoding),
// so that one computation serves all tables. Used by the mapper (sizes) and the probes (indices).
#pragma once

#include "tablebase/probe_board.h"
#include "tablebase/table_entry.h"

#include <cstdint>

namespace brindlemoth {

// Placements of the first group of men without pawns: two kings, or three men of different kinds.
constexpr std::uint64_t TWO_KING_PLACEMENTS = 462;
constexpr std::uint64_t THREE_MEN_PLACEMENTS = 31332;
// The index of men that no table holds, such as kings that touch; beyond every table.
constexpr std::uint64_t NO_INDEX = ~std::uint64_t{0};

extern std::uint64_t binomial[7][64];   // [k][n]: n over k
extern std::uint64_t pawn_index[6][24]; // by leading pawns less 1, slot of the leading pawn
extern std::uint64_t pawn_factor[6][4]; // placements by leading pawns less 1, file position

// Fills the three tables above. Called once, by the first syzygy_init().
void syzygy_build_index_tables();

// Writes the squares of the men, in the order of the encoding, into the places from `start` to
// `places` - 1, each XORed with `mask`; `flip` exchanges the colours. Requires `places` to be the
// end of a kind, and the board to hold the men that the encoding names. Returns `places`.
int syzygy_collect_squares(const ProbeBoard& board, const SideEncoding& encoding, int start,
                           int places, bool flip, int mask, int squares[MAX_TABLE_MEN]);

// Brings the leading pawn to place 0 and returns its file position.
int syzygy_pick_lead_pawn(int squares[MAX_TABLE_MEN], int lead_pawns);

// The index of the men on `squares`, which are mirrored and sorted on the way. NO_INDEX for men
// that no table holds.
std::uint64_t syzygy_position_index(int squares[MAX_TABLE_MEN], const SideEncoding& encoding,
                                    const TableEntry& entry);

} // namespace brindlemoth
