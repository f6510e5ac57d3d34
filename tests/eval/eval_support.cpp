#include "eval_support.h"

#include "support/support.h"

#include <random>

namespace brindlemoth {

namespace {

constexpr const char* EMPTY_BOARD =
    "11111111/11111111/11111111/11111111/11111111/11111111/11111111/11111111";
constexpr const char* REST_OF_FEN[2] = {" w - - 0 1", " b - - 0 1"};

// The letter of a square in the FEN.
char& at(std::string& fen, int square) {
    return fen[static_cast<std::size_t>(9 * (7 - rank_of(square)) + file_of(square))];
}

} // namespace

void for_random_placements(int count, const std::string& pieces, int max_others,
                           const std::function<void(Position&)>& visit) {
    std::mt19937_64 random(52);
    for (; count > 0; --count) {
        std::string fen = std::string(EMPTY_BOARD) + REST_OF_FEN[random() % 2];
        const auto put = [&](char letter) {
            int square = static_cast<int>(random() % 64);
            while (at(fen, square) != '1')
                square = static_cast<int>(random() % 64);
            at(fen, square) = letter;
        };
        for (const char letter : "Kk" + pieces)
            put(letter);
        for (std::size_t n = random() % static_cast<std::size_t>(max_others + 1); n > 0; --n)
            put("PPPPNBRQppppnbrq"[random() % 16]);
        Position position = position_from(fen);
        visit(position);
    }
}

} // namespace brindlemoth
