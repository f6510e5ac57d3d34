#include "book/polyglot_key.h"

#include "board/bitboard.h"
#include "book/polyglot_random64.h"

namespace brindlemoth {

namespace {

// The format numbers the kinds of piece black pawn, white pawn, black knight, ...
std::uint64_t piece_term(int colour, int type, int square) {
    const int kind = 2 * type + (colour == WHITE ? 1 : 0);
    return polyglot_random64[POLYGLOT_PIECES + 64 * kind + square];
}

// Whether a pawn of the side to move stands where it could capture onto ep_square; the format
// does not ask whether that capture would be legal. Works for any square that a FEN may name.
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
                key ^= piece_term(colour, type, pop_lowest(b));
    }

    constexpr int RIGHTS[4] = {WHITE_SHORT, WHITE_LONG, BLACK_SHORT, BLACK_LONG};
    for (int i = 0; i < 4; ++i)
        if ((position.castling & RIGHTS[i]) != 0)
            key ^= polyglot_random64[POLYGLOT_CASTLING + i];

    if (position.ep_square != NO_SQUARE && en_passant_counts(position))
        key ^= polyglot_random64[POLYGLOT_EN_PASSANT + file_of(position.ep_square)];
    if (position.side == WHITE)
        key ^= polyglot_random64[POLYGLOT_WHITE_TO_MOVE];
    return key;
}

} // namespace brindlemoth
