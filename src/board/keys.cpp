#include "board/keys.h"

#include "board/bitboard.h"

namespace brindlemoth {

Key piece_keys[PIECE_COUNT][SQUARE_COUNT];
Key castling_keys[16];
Key ep_file_keys[8];
Key side_key;

void init_keys() {
    // The fixed seed makes every hash the same in every run.
    std::uint64_t state = 0x246C7B3A9E5F1D28ULL;
    const auto next_key = [&state] {
        state ^= state << 13;
        state ^= state >> 7;
        state ^= state << 17;
        return state;
    };
    for (auto& squares : piece_keys)
        for (Key& key : squares)
            key = next_key();
    for (Key& key : castling_keys)
        key = next_key();
    for (Key& key : ep_file_keys)
        key = next_key();
    side_key = next_key();
}

Key compute_key(const Position& position) {
    Key key = castling_keys[position.castling];
    for (int square = 0; square < SQUARE_COUNT; ++square)
        if (position.board[square] != EMPTY_SQUARE)
            key ^= piece_keys[position.board[square]][square];
    if (position.ep_square != NO_SQUARE)
        key ^= ep_file_keys[file_of(position.ep_square)];
    if (position.side == BLACK)
        key ^= side_key;
    return key;
}

Key compute_pawn_key(const Position& position) {
    Key key = 0;
    for (int colour = WHITE; colour <= BLACK; ++colour)
        for (Bitboard pawns = position.pieces[colour][PAWN]; pawns != 0;)
            key ^= piece_keys[make_piece(colour, PAWN)][pop_lowest(pawns)];
    return key;
}

} // namespace brindlemoth
