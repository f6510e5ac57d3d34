#include "board/position.h"

#include "board/bitboard.h"

#include <cstring>
#include <initializer_list>

namespace brindlemoth {

Score psq_table[PIECE_COUNT][SQUARE_COUNT];

Score compute_psq(const Position& position) {
    Score sum{};
    for (int square = 0; square < SQUARE_COUNT; ++square)
        if (position.board[square] != EMPTY_SQUARE)
            sum += psq_table[position.board[square]][square];
    return sum;
}

bool views_agree(const Position& position) {
    Bitboard seen = 0;
    for (int colour = WHITE; colour <= BLACK; ++colour) {
        Bitboard own = 0;
        for (int type = PAWN; type <= KING; ++type) {
            const Bitboard pieces = position.pieces[colour][type];
            if (pieces & seen)
                return false;
            seen |= pieces;
            own |= pieces;
            for (Bitboard rest = pieces; rest != 0;)
                if (position.board[pop_lowest(rest)] != make_piece(colour, type))
                    return false;
        }
        if (own != position.occupied[colour])
            return false;
    }
    for (Bitboard empty = ~seen; empty != 0;)
        if (position.board[pop_lowest(empty)] != EMPTY_SQUARE)
            return false;
    return seen == position.all_pieces;
}

const char* move_to_text(Move move) {
    static char text[6];
    if (move == MOVE_NONE || move == MOVE_NULL)
        return std::strcpy(text, "0000");
    char* out = text;
    for (const int square : {move_from(move), move_to(move)}) {
        *out++ = static_cast<char>('a' + file_of(square));
        *out++ = static_cast<char>('1' + rank_of(square));
    }
    if (is_promotion(move))
        *out++ = PIECE_LETTERS[make_piece(BLACK, promoted_type(move))];
    *out = '\0';
    return text;
}

} // namespace brindlemoth
