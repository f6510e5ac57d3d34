#include "board/make_move.h"
#include "eval/evaluate.h"
#include "input/poll_input.h"
#include "movegen/legality.h"
#include "movegen/movegen.h"
#include "search/move_picker.h"
#include "search/search.h"
#include "search/see.h"
#include "search/transposition.h"
#include "search/watch.h"

#include <algorithm>
#include <utility>

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

    Move moves[MAX_MOVES];
    int scores[MAX_MOVES];
    const int count = static_cast<int>(generate_captures(position, moves) - moves);
    for (int i = 0; i < count; ++i)
        scores[i] = see(position, moves[i]);

    int best = stand_pat;
    Move best_move = MOVE_NONE;
    std::uint8_t bound = BOUND_UPPER;
    for (int i = 0; i < count; ++i) {
        const int next = pick_best_index(scores, i, count);
        std::swap(moves[i], moves[next]);
        std::swap(scores[i], scores[next]);
        // The scores only fall from here on, and alpha only rises: what holds for this move
        // holds for the rest.
        if (scores[i] < 0 || stand_pat + DELTA_MARGIN + scores[i] < alpha)
            break;
        const Move move = moves[i];
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
