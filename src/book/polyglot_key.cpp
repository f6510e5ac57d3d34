#include "book/polyglot_key.h"

#include "board/bitboard.h"
#include "book/polyglot_random64.h"

namespace brindlemoth {

namespace {

// The format counts the kinds of pieces as black pawn 0, white pawn 1, black knight 2, and so on.
std::uint64_t get_piece_number(int colour, int type, int square) {
    const int kind = 2 * type + (colour == WHITE ? 1 : 0);
    return POLYGLOT_RANDOM64[POLYGLOT_PIECES + SQUARE_COUNT * kind + square];
}

// Whether a pawn of the side to move attacks ep_square. The format counts en passant then, even if
// the capture would not be legal. Any ep_square that a FEN can set is allowed.
bool en_passant_counts(const Position& position) {
    const Bitboard capturers_from =
        pawn_attack_set(square_bit(position.ep_square), position.side ^ 1);
    return (capturers_from & position.pieces[position.side][PAWN]) != 0;
}

} // namespace

std::uint64_t polyglot_key(const Position& position) {
    std::uint64_t key = 0;

    for (int colour = WHITE; colour <= BLACK; ++colour) {
        for (int type = PAWN; type <= KING; ++type)
            for (Bitboard b = position.pieces[colour][type]; b != 0;)
                key ^= get_piece_number(colour, type, pop_lowest(b));
    }

    constexpr int RIGHTS[] = {WHITE_SHORT, WHITE_LONG, BLACK_SHORT, BLACK_LONG};
    for (int i = 0; i < 4; ++i)
        if ((position.castling & RIGHTS[i]) != 0)
            key ^= POLYGLOT_RANDOM64[POLYGLOT_CASTLING + i];

    if (position.ep_square != NO_SQUARE && en_passant_counts(position))
        key ^= POLYGLOT_RANDOM64[POLYGLOT_EN_PASSANT + file_of(position.ep_square)];
    if (position.side == WHITE)
        key ^= POLYGLOT_RANDOM64[POLYGLOT_WHITE_TO_MOVE];
    return key;
}

} // namespace brindlemoth
