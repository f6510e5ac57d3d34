// A list of moves from which the best one is taken at a time, by one step of a selection sort: a
// node that cuts off early leaves the rest unsorted. Used by the move picker and by quiescence.
//
// Captures are ordered by lazy SEE. A capture first gets its upper bound, the value of the captured
// piece, and see() is called only when the bound is the best of the list. With these captures
//     QxR bound 500    PxN bound 300    RxP bound 100
// find_best_capture() first computes QxR, -400. Now the bound of PxN is the best: it computes 300,
// and PxN is taken. Next, the bound of RxP is the best: if its 100 is below the floor of the
// caller, as in quiescence with a low stand-pat score, the loop ends and RxP is never computed.
#pragma once

#include "board/position.h"
#include "search/see.h"

#include <algorithm>
#include <limits>

namespace brindlemoth {

// The score of a move, its place in the list, and whether the score is final or an upper bound, in
// one number. The greatest key is the highest score and, among equals, the lowest place.
using SortKey = int;

constexpr SortKey TAKEN_KEY = std::numeric_limits<SortKey>::min(); // less than any other

constexpr int KEY_SCORE_SHIFT = 9;
static_assert(2 * MAX_MOVES == 1 << KEY_SCORE_SHIFT);

constexpr SortKey make_sort_key(int score, int place, bool is_final) {
    return score * (1 << KEY_SCORE_SHIFT) + 2 * (MAX_MOVES - 1 - place) + (is_final ? 1 : 0);
}
constexpr int score_of(SortKey key) {
    return key >> KEY_SCORE_SHIFT;
}
constexpr int place_of(SortKey key) {
    return MAX_MOVES - 1 - ((key >> 1) & (MAX_MOVES - 1));
}
constexpr bool is_final(SortKey key) {
    return (key & 1) != 0;
}

// Invariants, once the caller has set all keys:
// - place_of(keys[i]) is i for each move that is left, and keys[i] is TAKEN_KEY for a taken one;
// - the moves before place `taken` are taken, those from there to `count` are left;
// - the keys from `count` to the end of its row are TAKEN_KEY.
struct ScoredMoves {
    Move moves[MAX_MOVES];
    SortKey keys[MAX_MOVES];
    int count;
    int taken;
};

// Keys are compared by whole rows. The compiler makes vector instructions of that, and most lists
// of captures have one row, so the number of moves makes no branch.
constexpr int ROW = 8;
static_assert(MAX_MOVES % ROW == 0);

// Sets the number of moves. The caller then sets their keys.
inline void set_count(ScoredMoves& list, int count) {
    list.count = count;
    list.taken = 0;
    if (count < MAX_MOVES)
        std::fill_n(list.keys + count, std::min(ROW, MAX_MOVES - count), TAKEN_KEY);
}

// The best key, or TAKEN_KEY when no move is left.
inline SortKey find_best(const ScoredMoves& list) {
    SortKey best[ROW];
    std::copy_n(list.keys, ROW, best);
    for (int row = ROW; row < list.count; row += ROW)
        for (int i = 0; i < ROW; ++i)
            best[i] = std::max(best[i], list.keys[row + i]);
    for (int width = ROW / 2; width > 0; width /= 2)
        for (int i = 0; i < width; ++i)
            best[i] = std::max(best[i], best[width + i]);
    return best[0];
}

// The first key of a capture or promotion.
inline SortKey capture_key(const Position& position, Move move, int place) {
    return make_sort_key(see_bound(position, move), place, false);
}

// The same as find_best() for a list of captures. The result is final or its score is below
// `floor`.
inline SortKey find_best_capture(ScoredMoves& list, const Position& position, int floor) {
    SortKey best = find_best(list);
    while (!is_final(best) && score_of(best) >= floor) {
        const int place = place_of(best);
        const SortKey key = make_sort_key(see(position, list.moves[place]), place, true);
        list.keys[place] = key;
        if (key > best) // the SEE value equals its bound
            return key;
        best = find_best(list);
    }
    return best;
}

// Takes the move with that key. The first move that is left takes its place.
inline Move take_move(ScoredMoves& list, SortKey key) {
    const int place = place_of(key);
    const int first = list.taken++;
    const Move move = list.moves[place];
    list.moves[place] = list.moves[first];
    list.keys[place] = list.keys[first] + 2 * (first - place);
    list.keys[first] = TAKEN_KEY;
    return move;
}

} // namespace brindlemoth
