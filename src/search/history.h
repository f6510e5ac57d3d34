// What the search remembers of quiet moves that worked: history by squares, history by what the
// previous move was, killers by ply and counter moves. Fixed-size global tables.
#pragma once

#include "board/position.h"
#include "search/score_scale.h"

#include <cstdint>

namespace brindlemoth {

// A cell's size stays near 16384, so that 16 bits hold it and a node reads few lines. The row of
// EMPTY_SQUARE stands for no previous move: it is read like the others and never written.
extern std::int16_t butterfly_history[2][4096]; // side, move_squares()
// Previous piece, its to, piece, to.
extern std::int16_t continuation_history[PIECE_COUNT + 1][64][PIECE_COUNT][64];
extern Move killers[MAX_PLY][2];               // by ply; slot 0 the newer
extern Move countermoves[PIECE_COUNT + 1][64]; // previous piece, its to

// The move that led to a node. Without one (root, null move) piece is EMPTY_SQUARE.
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
inline int history_score(int side, int piece, Move move, PreviousMove previous) {
    return butterfly_history[side][move_squares(move)] +
           continuation_history[previous.piece][previous.to][piece][move_to(move)];
}

// Pulls a table cell toward the amount. Requires an amount of at most 16384 either way, which keeps
// the cell within that as well.
constexpr void update_cell(std::int16_t& cell, int amount) {
    const int size = amount < 0 ? -amount : amount;
    cell = static_cast<std::int16_t>(cell + amount - cell * size / 16384);
}

// After a cut-off by the quiet move `best`: rewards it and punishes the other quiet moves that
// were searched before it. The position is the one in which they were played.
void update_history(const Position& position, Move best, const Move* quiets, int quiet_count,
                    int depth, PreviousMove previous);

// All that a quiet cut-off leaves behind: killer, history, counter move.
void record_quiet_cutoff(const Position& position, Move best, const Move* quiets, int quiet_count,
                         int depth, int ply, PreviousMove previous);

} // namespace brindlemoth
