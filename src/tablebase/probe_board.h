// The board of the endgame table code: a small value record that is copied to play a move, so
// that a probe never touches a Position. No castling rights: positions that have any are never
// probed. The generators assume at most seven men. Used by the probes and by the search, which
// fills one with board_from_position() for syzygy_wdl().
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

// Piece types as the table files number them; 8 is added there for the second colour.
enum : int {
    PROBE_NONE,
    PROBE_PAWN,
    PROBE_KNIGHT,
    PROBE_BISHOP,
    PROBE_ROOK,
    PROBE_QUEEN,
    PROBE_KING
};

// Bits 0 to 5 the destination, 6 to 11 the origin, 12 to 14 the promotion. An en-passant capture
// is an ordinary move to ep_square.
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

// Room that a caller's list must have: seven men have at most 7 * 27 moves.
constexpr int MAX_PROBE_CAPTURES = 64;
constexpr int MAX_PROBE_MOVES = 196;

void board_from_position(const Position& position, ProbeBoard& board);

// The men of one colour (1 white, anything else black) and type; 0 for a type outside
// PROBE_PAWN to PROBE_KING.
Bitboard board_men(const ProbeBoard& board, int white, int type);

// The key that finds a table: a sum over all men but the kings. With `mirror` the colours are
// exchanged.
Key board_material_key(const ProbeBoard& board, bool mirror);
// The same key from the number of men by piece code: type for white, type + 8 for black.
Key material_key_of_counts(const int counts[16], bool mirror);

// Writes the signature, such as KRPvKR, with a terminator: White first, or Black first with
// `mirror`. The text needs one place for each man and two more.
void board_material_name(const ProbeBoard& board, char* text, bool mirror);

// The type of the side to move's man on the move's origin, PROBE_NONE if it has none there.
int board_moved_type(const ProbeBoard& board, ProbeMove move);

// The generators write from `list` on and return the end of what they wrote. Pseudo-legal
// captures; all pseudo-legal moves; all legal moves. Men go from king down to pawn, and from low
// squares to high: the order decides between equal root moves.
ProbeMove* board_captures(const ProbeBoard& board, ProbeMove* list);
ProbeMove* board_moves(const ProbeBoard& board, ProbeMove* list);
ProbeMove* board_legal_moves(const ProbeBoard& board, ProbeMove* list);

// Fills `next` with the board after a pseudo-legal move. True when that is a legal position.
bool board_play(ProbeBoard& next, const ProbeBoard& board, ProbeMove move);

// True when the side not to move has a king and that king is not attacked.
bool board_legal_position(const ProbeBoard& board);
// True when the side to move is in check; false when it has no king.
bool board_in_check(const ProbeBoard& board);
// True when the side to move has a legal move.
bool board_has_legal_move(const ProbeBoard& board);
// True when the side to move is in check and has no legal move.
bool board_is_mate(const ProbeBoard& board);
// True when the record describes a possible position.
bool board_is_sane(const ProbeBoard& board);

} // namespace brindlemoth
