// A list of moves that is handed out best first by selection, one step at a time: a node that cuts
// off early leaves the rest unsorted. The move picker and quiescence keep one on their stack.
#pragma once

#include "board/position.h"
#include "search/see.h"

#include <algorithm>
#include <limits>

namespace brindlemoth {

// The score of an entry and its place in the list in one number, so that a plain maximum finds the
// entry whose turn it is: the highest score, and the lowest place among equals. The last bit tells
// a final score from an upper bound that stands in for one.
using SortKey = int;

constexpr SortKey HANDED_OUT = std::numeric_limits<SortKey>::min();

constexpr SortKey sort_key(int score, int place, bool is_final) {
    return score * (2 * MAX_MOVES) + 2 * (MAX_MOVES - 1 - place) + (is_final ? 1 : 0);
}
constexpr int score_of(SortKey key) {
    return key >> 9;
}
constexpr int place_of(SortKey key) {
    return MAX_MOVES - 1 - ((key >> 1) & (MAX_MOVES - 1));
}
constexpr bool is_final(SortKey key) {
    return (key & 1) != 0;
}
static_assert(2 * MAX_MOVES == 1 << 9);

struct ScoredMoves {
    Move moves[MAX_MOVES];
    SortKey keys[MAX_MOVES]; // HANDED_OUT as well from `count` to the end of its row
    int count;
    int handed_out; // those before this place have been
};

// Keys are compared by rows, which the compiler can do at once, and most lists of captures have a
// single one: how many moves there are makes no branch.
constexpr int ROW = 8;
static_assert(MAX_MOVES % ROW == 0);

// Says how many moves there are. All of them get their keys afterwards.
inline void set_count(ScoredMoves& list, int count) {
    list.count = count;
    list.handed_out = 0;
    if (count < MAX_MOVES)
        std::fill_n(list.keys + count, std::min(ROW, MAX_MOVES - count), HANDED_OUT);
}

// The best key, or HANDED_OUT when there is none left.
inline SortKey best_key(const ScoredMoves& list) {
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

// The same of a list of captures, by what their exchanges win. No exchange wins more than what the
// move takes, and that stands in for it until the entry comes out best: most captures are never
// handed out, and need no more. Entries below `floor` are not looked at any closer.
inline SortKey best_exchange_key(ScoredMoves& list, const Position& position, int floor) {
    SortKey best = best_key(list);
    while (!is_final(best) && score_of(best) >= floor) {
        const int place = place_of(best);
        const int exchange = see(position, list.moves[place]);
        const SortKey settled = sort_key(exchange, place, true);
        list.keys[place] = settled;
        if (settled > best)
            return settled;
        best = best_key(list);
    }
    return best;
}

// The key that a capture or promotion has at first.
inline SortKey exchange_key(const Position& position, Move move, int place) {
    return sort_key(see_bound(position, move), place, false);
}

// Hands out the entry with that key; the first of the others takes its place, as far as ties go.
inline Move hand_out(ScoredMoves& list, SortKey key) {
    const int place = place_of(key);
    const int first = list.handed_out++;
    const Move move = list.moves[place];
    list.moves[place] = list.moves[first];
    list.keys[place] = list.keys[first] + 2 * (first - place);
    list.keys[first] = HANDED_OUT;
    return move;
}

} // namespace brindlemoth
