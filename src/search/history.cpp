#include "search/history.h"

#include <cstring>

namespace brindlemoth {

std::int16_t butterfly_history[2][4096];
std::int16_t continuation_history[PIECE_COUNT + 1][64][PIECE_COUNT][64];
Move killers[MAX_PLY][2];
Move countermoves[PIECE_COUNT + 1][64];

namespace {

void halve(std::int16_t* cells, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i)
        cells[i] = static_cast<std::int16_t>(cells[i] / 2);
}

} // namespace

void clear_history() {
    std::memset(butterfly_history, 0, sizeof butterfly_history);
    std::memset(continuation_history, 0, sizeof continuation_history);
    std::memset(killers, 0, sizeof killers);
    std::memset(countermoves, 0, sizeof countermoves);
}

void age_history() {
    std::memset(killers, 0, sizeof killers);
    halve(&butterfly_history[0][0], sizeof butterfly_history / sizeof(std::int16_t));
    halve(&continuation_history[0][0][0][0], sizeof continuation_history / sizeof(std::int16_t));
}

void update_history(const Position& position, Move best, const Move* quiets, int quiet_count,
                    int depth, PreviousMove previous) {
    const int bonus = depth * depth;
    auto& butterfly = butterfly_history[position.side];
    update_cell(butterfly[move_squares(best)], bonus);
    for (int i = 0; i < quiet_count; ++i)
        if (quiets[i] != best)
            update_cell(butterfly[move_squares(quiets[i])], -bonus);
    if (previous.piece == EMPTY_SQUARE)
        return;
    auto& continuation = continuation_history[previous.piece][previous.to];
    const auto update_continuation = [&](Move move, int amount) {
        update_cell(continuation[position.board[move_from(move)]][move_to(move)], amount);
    };
    update_continuation(best, bonus);
    for (int i = 0; i < quiet_count; ++i)
        if (quiets[i] != best)
            update_continuation(quiets[i], -bonus);
}

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
