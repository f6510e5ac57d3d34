#include "rules/geometry.h"

#include <bit>
#include <utility>
#include <vector>

namespace brindlemoth::tablegen {

using Step = std::pair<int, int>; // files to the right, ranks up

static const std::vector<Step> STRAIGHT = {{0, 1}, {1, 0}, {0, -1}, {-1, 0}};
static const std::vector<Step> SLANTED = {{1, 1}, {1, -1}, {-1, -1}, {-1, 1}};
static const std::vector<Step> LEAPS = {{1, 2},   {2, 1},   {2, -1}, {1, -2},
                                        {-1, -2}, {-2, -1}, {-2, 1}, {-1, 2}};

static Geometry build_geometry() {
    Geometry made;
    std::vector<Step> all = STRAIGHT;
    all.insert(all.end(), SLANTED.begin(), SLANTED.end());

    auto walk = [](int square, Step step, int limit) {
        Ray ray;
        int file = square % 8 + step.first;
        int rank = square / 8 + step.second;
        while (file >= 0 && file < 8 && rank >= 0 && rank < 8 && ray.length < limit) {
            ray.square[ray.length++] = static_cast<std::uint8_t>(8 * rank + file);
            file += step.first;
            rank += step.second;
        }
        return ray;
    };
    auto add = [&](Kind kind, const std::vector<Step>& steps, int limit) {
        made.ray_count[kind] = steps.size();
        for (std::size_t square = 0; square < 64; ++square) {
            for (std::size_t i = 0; i < steps.size(); ++i) {
                const Ray ray = walk(static_cast<int>(square), steps[i], limit);
                made.rays[kind][square][i] = ray;
                for (std::size_t k = 0; k < ray.length; ++k) {
                    made.attacks[WHITE][kind][square] |= bit(ray.square[k]);
                    made.attacks[BLACK][kind][square] |= bit(ray.square[k]);
                    for (std::size_t nearer = 0; kind == QUEEN && nearer < k; ++nearer) {
                        made.between[square][ray.square[k]] |= bit(ray.square[nearer]);
                        made.behind[square][ray.square[nearer]] |= bit(ray.square[k]);
                    }
                }
            }
        }
    };
    add(KNIGHT, LEAPS, 1);
    add(BISHOP, SLANTED, 7);
    add(ROOK, STRAIGHT, 7);
    add(QUEEN, all, 7);
    add(KING, all, 1);
    for (std::size_t square = 0; square < 64; ++square) {
        made.attacks[WHITE][PAWN][square] = beside(Squares{1} << square) << 8;
        made.attacks[BLACK][PAWN][square] = beside(Squares{1} << square) >> 8;
    }
    for (Reflection how = REFLECTIONS; how-- > 0;) {
        for (std::size_t square = 0; square < 64; ++square) {
            const int to = std::countr_zero(reflect_all(how, Squares{1} << square));
            made.reflected[how][square] = static_cast<std::uint8_t>(to);
            if (to % 8 <= 3 && to / 8 <= to % 8)
                made.folding[square] = how;
        }
    }
    return made;
}

const Geometry geometry = build_geometry();

// Exchanges the bits in `mask` with those `shift` places above them.
static Squares swap_bits(Squares squares, Squares mask, int shift) {
    const Squares different = (squares ^ squares >> shift) & mask;
    return squares ^ different ^ different << shift;
}

static Squares exchange_files(Squares squares) {
    squares = swap_bits(squares, 0x5555555555555555, 1);
    squares = swap_bits(squares, 0x3333333333333333, 2);
    return swap_bits(squares, 0x0F0F0F0F0F0F0F0F, 4);
}

static Squares exchange_ranks(Squares squares) {
    squares = swap_bits(squares, 0x00FF00FF00FF00FF, 8);
    squares = swap_bits(squares, 0x0000FFFF0000FFFF, 16);
    return squares << 32 | squares >> 32;
}

static Squares exchange_files_and_ranks(Squares squares) {
    squares = swap_bits(squares, 0x00AA00AA00AA00AA, 7);
    squares = swap_bits(squares, 0x0000CCCC0000CCCC, 14);
    return swap_bits(squares, 0x00000000F0F0F0F0, 28);
}

Squares reflect_all(Reflection how, Squares squares) {
    if ((how & LEFT_RIGHT) != 0)
        squares = exchange_files(squares);
    if ((how & TOP_BOTTOM) != 0)
        squares = exchange_ranks(squares);
    return (how & DIAGONAL) != 0 ? exchange_files_and_ranks(squares) : squares;
}

Squares reflect_all_back(Reflection how, Squares squares) {
    if ((how & DIAGONAL) != 0)
        squares = exchange_files_and_ranks(squares);
    return reflect_all(how & ~DIAGONAL, squares);
}

} // namespace brindlemoth::tablegen
