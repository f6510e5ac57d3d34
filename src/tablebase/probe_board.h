// The board of the endgame table code: a small record that is copied to play a move, so a probe
// never changes a Position. It has no castling rights; positions with castling rights are not
// probed. The move generators assume at most seven men. Used by the probes, and by the search,
// which fills a board with board_from_position() and passes it to syzygy_wdl().
#pragma once

#include "board/position.h"

#include <cstdint>

namespace brindlemoth {

struct ProbeBoard {
    Bitboard white; // all white men
    Bitboard black; // all black men
    Bitboard kings; // this and the following: of both colours
    Bitboard queens;
    Bitboard rooks;
    Bitboard bishops;
    Bitboard knights;
    Bitboard pawns;
    std::uint8_t halfmove;      // moves since the last capture or pawn move
    std::uint8_t ep_square;     // en-passant target, 0 if none (not NO_SQUARE as in Position)
    std::uint8_t white_to_move; // 1 or 0
};

// Piece types as the table files number them.
enum : int {
    PROBE_NONE,
    PROBE_PAWN,
    PROBE_KNIGHT,
    PROBE_BISHOP,
    PROBE_ROOK,
    PROBE_QUEEN,
    PROBE_KING
};

// The letters of a signature by piece type; the blank stands for PROBE_NONE.
constexpr char TYPE_LETTERS[] = " PNBRQK";

// Piece codes: the type for the first-named side of a signature, and the type plus SECOND_SIDE for
// the other side.
constexpr int SECOND_SIDE = 8;
constexpr int PIECE_TYPE_MASK = 7;
constexpr int PIECE_CODES = 16;

// Bits 0 to 5 are the destination, bits 6 to 11 the origin, bits 12 to 14 the promotion. An
// en-passant capture is an ordinary move to ep_square.
using ProbeMove = std::uint16_t;

enum : int {
    PROMOTE_NONE,
    PROMOTE_QUEEN,
    PROMOTE_ROOK,
    PROMOTE_BISHOP,
    PROMOTE_KNIGHT,
};

constexpr ProbeMove make_probe_move(int from, int to, int promotion) {
    return static_cast<ProbeMove>(to | (from << 6) | (promotion << 12));
}
constexpr int probe_move_to(ProbeMove move) {
    return move & 63;
}
constexpr int probe_move_from(ProbeMove move) {
    return (move >> 6) & 63;
}
constexpr int probe_move_promotion(ProbeMove move) {
    return (move >> 12) & 7;
}

// Sizes of the lists that callers pass. Seven men have at most 7 * 27 moves.
constexpr int MAX_PROBE_CAPTURES = 64;
constexpr int MAX_PROBE_MOVES = 196;

void board_from_position(const Position& position, ProbeBoard& board);

// The men of one type and colour: `white` is 1 for white, and anything else for black. Returns 0
// for a type outside PROBE_PAWN to PROBE_KING.
Bitboard board_men(const ProbeBoard& board, int white, int type);

// The material key, by which the registry finds a table: the sum of a weight for each man but the
// kings. With `mirror` the colours are exchanged.
Key board_material_key(const ProbeBoard& board, bool mirror);
// The same key from the number of men by piece code, with the first-named side as white.
Key material_key_of_counts(const int counts[PIECE_CODES], bool mirror);

constexpr int SIGNATURE_ROOM = 16;

// Writes the signature, such as KRPvKR, and a terminator. White is named first, or Black with
// `mirror`. `text` must have room for one character per man and two more;
// SIGNATURE_ROOM is enough for every table.
void board_material_name(const ProbeBoard& board, char* text, bool mirror);

// The type of the moving man, or PROBE_NONE if the side to move has no man on the origin.
int board_moved_type(const ProbeBoard& board, ProbeMove move);

// The generators write moves from `list` on and return the end of what they wrote: pseudo-legal
// captures, pseudo-legal moves, or legal moves. They go through the types from king to pawn, the
// men of a type from low to high squares, and the destinations of a man from low to high squares.
// This order decides between equal moves at the root.
ProbeMove* board_captures(const ProbeBoard& board, ProbeMove* list);
ProbeMove* board_moves(const ProbeBoard& board, ProbeMove* list);
ProbeMove* board_legal_moves(const ProbeBoard& board, ProbeMove* list);

// Fills `next` with the board after a pseudo-legal move. Returns whether the move is legal.
bool board_play(ProbeBoard& next, const ProbeBoard& board, ProbeMove move);

// True when the side to move is in check; false when it has no king.
bool board_in_check(const ProbeBoard& board);
// True when the side to move has a legal move.
bool board_has_legal_move(const ProbeBoard& board);
// True when the side to move is in check and has no legal move.
bool board_is_mate(const ProbeBoard& board);
// True when the record describes a possible position: one king a side, no pawn on the first or last
// rank, consistent sets, and the side not to move not in check.
bool board_is_sane(const ProbeBoard& board);

} // namespace brindlemoth
