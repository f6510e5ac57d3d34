// What the search remembers of quiet moves that worked: history by squares, history by what the
// previous move was, killers by ply and counter moves. Fixed-size global tables.
#pragma once

#include "board/position.h"
#include "search/scores.h"

#include <cstdint>

namespace brindlemoth {

extern std::int32_t butterfly_history[2][64][64];         // side that moves, from, to
extern std::int32_t continuation_history[12][64][12][64]; // previous piece, its to, piece, to
extern Move killers[MAX_PLY][2];                          // by ply; slot 0 the newer
extern Move countermoves[12][64];                         // previous piece, its to-square

// The move that led to a node. Without one (root, null move) piece is EMPTY_SQUARE, and the
// tables indexed by it are neither read nor written.
struct PreviousMove {
    int piece; // what stands on its to-square now
    int to;
};

inline PreviousMove previous_move_of(const Position& position, Move move) {
    if (move == MOVE_NONE || move == MOVE_NULL)
        return {EMPTY_SQUARE, 0};
    return {position.board[move_to(move)], move_to(move)};
}

// Empties all four tables.
void clear_history();
// Before each search: clears the killers and halves both history tables, toward zero.
void age_history();

// Butterfly history plus, where there is a previous move, continuation history.
inline int history_score(int side, int piece, int from, int to, PreviousMove previous) {
    int score = butterfly_history[side][from][to];
    if (previous.piece != EMPTY_SQUARE && piece != EMPTY_SQUARE)
        score += continuation_history[previous.piece][previous.to][piece][to];
    return score;
}

// Pulls a table cell toward the amount; its size stays near 16384.
constexpr void update_cell(std::int32_t& cell, int amount) {
    const int size = amount < 0 ? -amount : amount;
    cell += amount - cell * size / 16384;
}

// After a cut-off by the quiet move `best`: rewards it and punishes the other quiet moves that
// were searched before it. The position is the one in which they were played.
void update_history(const Position& position, Move best, const Move* quiets, int quiet_count,
                    int depth, PreviousMove previous);

// All that a quiet cut-off leaves behind: killer, history, counter move.
void record_quiet_cutoff(const Position& position, Move best, const Move* quiets, int quiet_count,
                         int depth, int ply, PreviousMove previous);

} // namespace brindlemoth
