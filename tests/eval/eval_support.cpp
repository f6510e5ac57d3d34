#include "eval_support.h"

#include "support/support.h"

#include <array>
#include <random>
#include <string_view>

namespace brindlemoth {

namespace {

constexpr std::string_view PIECE_LETTERS = "PNBRQKpnbrqk";

std::string fen_of(const std::array<int, 64>& board, int side) {
    std::string text;
    for (int rank = 7; rank >= 0; --rank) {
        for (int file = 0; file < 8; ++file) {
            const int piece = board[static_cast<std::size_t>(make_square(file, rank))];
            text += piece == EMPTY_SQUARE ? '1' : PIECE_LETTERS[static_cast<std::size_t>(piece)];
        }
        text += rank > 0 ? "/" : "";
    }
    return text + (side == WHITE ? " w - - 0 1" : " b - - 0 1");
}

} // namespace

Position mirrored(const Position& position) {
    std::array<int, 64> board{};
    for (int square = 0; square < SQUARE_COUNT; ++square) {
        const int piece = position.board[square];
        board[static_cast<std::size_t>(flip_rank(square))] =
            piece == EMPTY_SQUARE ? EMPTY_SQUARE : (piece + 6) % 12;
    }
    return position_from(fen_of(board, position.side ^ 1));
}

void for_random_placements(int count, const std::string& men, int max_others,
                           const std::function<void(Position&)>& visit) {
    std::mt19937_64 random(52);
    const auto below = [&](int n) {
        return static_cast<int>(random() % static_cast<std::uint64_t>(n));
    };
    for (int i = 0; i < count; ++i) {
        std::array<int, 64> board;
        board.fill(EMPTY_SQUARE);
        const auto put = [&](int piece) {
            int square = below(64);
            while (board[static_cast<std::size_t>(square)] != EMPTY_SQUARE)
                square = below(64);
            board[static_cast<std::size_t>(square)] = piece;
        };
        put(make_piece(WHITE, KING));
        put(make_piece(BLACK, KING));
        for (const char letter : men)
            put(static_cast<int>(PIECE_LETTERS.find(letter)));
        for (int n = below(max_others + 1); n > 0; --n) {
            const int colour = below(2);
            put(make_piece(colour, below(2) == 0 ? PAWN : below(KING)));
        }
        Position position = position_from(fen_of(board, below(2)));
        visit(position);
    }
}

} // namespace brindlemoth
