#include "rules/geometry.h"

#include <utility>
#include <vector>

namespace brindlemoth::tablegen {

using Step = std::pair<int, int>; // files to the right, ranks up

static const std::vector<Step> STRAIGHT = {{0, 1}, {1, 0}, {0, -1}, {-1, 0}};
static const std::vector<Step> DIAGONAL = {{1, 1}, {1, -1}, {-1, -1}, {-1, 1}};
static const std::vector<Step> LEAPS = {{1, 2},   {2, 1},   {2, -1}, {1, -2},
                                        {-1, -2}, {-2, -1}, {-2, 1}, {-1, 2}};

static Geometry build_geometry() {
    Geometry made;
    std::vector<Step> all = STRAIGHT;
    all.insert(all.end(), DIAGONAL.begin(), DIAGONAL.end());

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
        made.ray_count[kind] = static_cast<int>(steps.size());
        for (std::size_t square = 0; square < 64; ++square) {
            for (std::size_t i = 0; i < steps.size(); ++i) {
                const Ray ray = walk(static_cast<int>(square), steps[i], limit);
                made.rays[kind][square][i] = ray;
                for (std::size_t k = 0; k < ray.length; ++k) {
                    made.attacks[WHITE][kind][square] |= bit(ray.square[k]);
                    made.attacks[BLACK][kind][square] |= bit(ray.square[k]);
                    for (std::size_t nearer = 0; kind == QUEEN && nearer < k; ++nearer) {
                        made.between[square][ray.square[k]] |= bit(ray.square[nearer]);
                    }
                }
            }
        }
    };
    add(KNIGHT, LEAPS, 1);
    add(BISHOP, DIAGONAL, 7);
    add(ROOK, STRAIGHT, 7);
    add(QUEEN, all, 7);
    add(KING, all, 1);
    for (std::size_t square = 0; square < 64; ++square) {
        for (const int side : {-1, 1}) {
            for (const auto& [colour, forward] : {Step{WHITE, 1}, Step{BLACK, -1}}) {
                const Ray ray = walk(static_cast<int>(square), {side, forward}, 1);
                if (ray.length == 1) {
                    made.attacks[static_cast<std::size_t>(colour)][PAWN][square] |=
                        bit(ray.square[0]);
                }
            }
        }
    }
    return made;
}

const Geometry geometry = build_geometry();

} // namespace brindlemoth::tablegen
