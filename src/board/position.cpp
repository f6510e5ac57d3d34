#include "board/position.h"

#include "board/bitboard.h"
#include "platform/standard_output.h"

#include <cstring>
#include <initializer_list>

namespace brindlemoth {

Score psq_table[12][64];

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
        *out++ = "nbrq"[move_flag(move) & 3];
    *out = '\0';
    return text;
}

void print_board(const Position& position) {
    constexpr const char* RULE = "\n  +---+---+---+---+---+---+---+---+\n";
    print("%s", RULE);
    for (int rank = 7; rank >= 0; --rank) {
        char row[] = " . | . | . | . | . | . | . | . |";
        for (int file = 0; file < 8; ++file)
            row[4 * file + 1] = "PNBRQKpnbrqk."[position.board[make_square(file, rank)]];
        print("%d |%s%s", rank + 1, row, RULE);
    }
    print("    a   b   c   d   e   f   g   h\n");
    print("\nSide: %s\n", position.side == WHITE ? "white" : "black");
    print("Castling: %s%s%s%s\n", position.castling & WHITE_SHORT ? "K" : "",
          position.castling & WHITE_LONG ? "Q" : "", position.castling & BLACK_SHORT ? "k" : "",
          position.castling & BLACK_LONG ? "q" : "");
    if (position.ep_square != NO_SQUARE)
        print("EP square: %c%d\n", 'a' + file_of(position.ep_square),
              rank_of(position.ep_square) + 1);
    print("50-move: %d, Hash: %016llx\n", position.halfmove,
          static_cast<unsigned long long>(position.key));
}

} // namespace brindlemoth
