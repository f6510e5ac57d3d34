#include "search/history.h"

#include <cstdlib>

namespace brindlemoth {

namespace {

// The size that a history cell approaches: an amount of at most this size never takes it further.
constexpr int MAX_HISTORY = 16384;
static_assert(MAX_PLY * MAX_PLY <= MAX_HISTORY); // of an amount, depth * depth

void update_cell(std::int16_t& cell, int amount) {
    cell = static_cast<std::int16_t>(cell + amount - cell * std::abs(amount) / MAX_HISTORY);
}

void update_history(const Position& position, Move best, const Move* quiets, int quiet_count,
                    int depth, PreviousMove previous) {
    const int bonus = depth * depth;
    const auto update_all = [&](const auto& cell_of) {
        update_cell(cell_of(best), bonus);
        for (int i = 0; i < quiet_count; ++i)
            if (quiets[i] != best)
                update_cell(cell_of(quiets[i]), -bonus);
    };
    update_all([&](Move move) -> std::int16_t& {
        return butterfly_history[position.side][move_squares(move)];
    });
    if (previous.piece != EMPTY_SQUARE)
        update_all([&](Move move) -> std::int16_t& {
            const int piece = position.board[move_from(move)];
            return continuation_history[previous.piece][previous.to][piece][move_to(move)];
        });
}

} // namespace

void record_quiet_cutoff(const Position& position, Move best, const Move* quiets, int quiet_count,
                         int depth, int ply, PreviousMove previous) {
    if (best != killers[ply][0]) {
        killers[ply][1] = killers[ply][0];
        killers[ply][0] = best;
    }
    update_history(position, best, quiets, quiet_count, depth, previous);
    if (previous.piece != EMPTY_SQUARE)
        countermoves[previous.piece][previous.to] = best;
}

} // namespace brindlemoth
