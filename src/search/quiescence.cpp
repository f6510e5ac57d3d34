#include "board/make_move.h"
#include "eval/evaluate.h"
#include "movegen/generate.h"
#include "movegen/legality.h"
#include "search/limit_check.h"
#include "search/scored_moves.h"
#include "search/search.h"
#include "search/transposition.h"

#include <algorithm>

namespace brindlemoth {

namespace {

constexpr int DELTA_MARGIN = 200;

} // namespace

int quiescence(Position& position, SearchFrame* frame, int alpha, int beta, int ply) {
    frame->pv_length = 0;
    if (stop_flag)
        return 0;
    count_node();
    sel_depth = std::max(sel_depth, ply);

    const int stand_pat = evaluate(position);
    if (ply >= MAX_PLY || stand_pat >= beta)
        return stand_pat;
    alpha = std::max(alpha, stand_pat);

    if (const TTEntry* const entry = tt_probe(position.key)) {
        const int score = score_from_table(entry->score, ply);
        if (tt_bound_cuts(entry->bound, score, alpha, beta))
            return score;
    }

    ScoredMoves list;
    set_count(list, static_cast<int>(generate_captures(position, list.moves) - list.moves));
    for (int i = 0; i < list.count; ++i)
        list.keys[i] = capture_key(position, list.moves[i], i);

    int best = stand_pat;
    Move best_move = MOVE_NONE;
    std::uint8_t bound = BOUND_UPPER;
    while (true) {
        // Prune captures that lose material (SEE below 0) or gain too little to reach alpha (delta
        // pruning). SEE values only fall from here on and alpha only rises, so the first such move
        // ends the loop.
        const int least_gain = std::max(alpha - stand_pat - DELTA_MARGIN, 0);
        const SortKey next = find_best_capture(list, position, least_gain);
        if (score_of(next) < least_gain)
            break;
        const Move move = take_move(list, next);
        if (!move_is_legal(position, move))
            continue;
        make_move(position, move);
        tt_prefetch(position.key);
        const int score = -quiescence(position, frame + 1, -beta, -alpha, ply + 1);
        unmake_move(position, move);
        if (stop_flag)
            return 0;
        if (score <= best)
            continue;
        best = score;
        best_move = move;
        bound = BOUND_EXACT;
        if (score <= alpha)
            continue;
        alpha = score;
        update_pv(frame, move);
        if (score >= beta) {
            bound = BOUND_LOWER;
            break;
        }
    }
    tt_store(position.key, best, bound, 0, best_move, ply);
    return best;
}

} // namespace brindlemoth
