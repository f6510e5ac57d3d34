#include "search/search.h"

#include "board/bitboard.h"
#include "board/make_move.h"
#include "eval/evaluate.h"
#include "input/poll_input.h"
#include "movegen/legality.h"
#include "movegen/movegen.h"
#include "search/history.h"
#include "search/move_picker.h"
#include "search/see.h"
#include "search/transposition.h"
#include "search/limit_check.h"
#include "tablebase/syzygy.h"

#include <algorithm>
#include <cmath>

namespace brindlemoth {

int sel_depth;
int iteration_depth;
Move root_excluded[MAX_MOVES];
int root_excluded_count;
int reductions[MAX_DEPTH + 1][256];

namespace {

constexpr int REVERSE_FUTILITY_DEPTH = 8;
constexpr int REVERSE_FUTILITY_MARGIN = 90; // for each ply of depth
constexpr int REVERSE_FUTILITY_MARGIN_IMPROVING = 70;
constexpr int RAZOR_DEPTH = 3;
constexpr int RAZOR_MARGIN = 300;
constexpr int PROBCUT_DEPTH = 5;
constexpr int PROBCUT_MARGIN = 200;
constexpr int PROBCUT_REDUCTION = 4;
constexpr int INTERNAL_REDUCTION_DEPTH = 4;
constexpr int SEE_PRUNING_DEPTH = 8;
constexpr int SEE_PRUNING_MARGIN = 50; // for each ply of depth
constexpr int FUTILITY_DEPTH = 3;
constexpr int FUTILITY_MARGIN = 125; // for each ply of depth
constexpr int FUTILITY_MARGIN_IMPROVING = 175;
constexpr int SINGULAR_DEPTH = 8;
constexpr int LMR_DEPTH = 3;
constexpr int LMR_MOVES = 4;
constexpr int HISTORY_PER_PLY = 8192; // history that is worth one ply of reduction

// Quiet moves searched before the rest is skipped, by improving and depth.
constexpr int LMP_DEPTH = 6;
constexpr int lmp_limits[2][LMP_DEPTH + 1] = {{0, 3, 5, 8, 13, 18, 25}, {0, 5, 8, 12, 18, 25, 35}};

// Whether the position occurred before, with the same side to move, since the last move that
// cannot be taken back: in the tree or in the game before it.
bool is_repetition(const Position& position) {
    if (position.halfmove < 2)
        return false;
    const int first = std::max(position.undo_count - position.halfmove, 0);
    for (int i = position.undo_count - 2; i >= first; i -= 2)
        if (position.undo[i].key == position.key)
            return true;
    return false;
}

bool has_piece_besides_pawns(const Position& position) {
    const Bitboard* const own = position.pieces[position.side];
    return (own[KNIGHT] | own[BISHOP] | own[ROOK] | own[QUEEN]) != 0;
}

bool has_legal_quiet(const Position& position, const LegalityMasks& legality) {
    Move moves[MAX_MOVES];
    const Move* const end = generate_quiets(position, moves);
    return std::any_of(static_cast<const Move*>(moves), end,
                       [&](Move move) { return move_is_legal(position, legality, move); });
}

bool is_root_excluded(Move move) {
    return std::find(root_excluded, root_excluded + root_excluded_count, move) !=
           root_excluded + root_excluded_count;
}

bool may_probe_tables(const Position& position) {
    return syzygy_probe_limit != 0 && position.castling == 0 && position.halfmove == 0 &&
           popcount(position.all_pieces) <= syzygy_probe_limit;
}

// Asks the tables for a node's value. True when that settles the node, with its score; otherwise
// a win or loss may still have narrowed the window.
bool probe_tables(const Position& position, int depth, int ply, int& alpha, int& beta, int& score) {
    ProbeBoard board;
    board_from_position(position, board);
    int success;
    const int wdl = syzygy_wdl(board, success);
    if (success == PROBE_FAILED)
        return false;
    count_node();

    std::uint8_t bound = BOUND_EXACT;
    switch (wdl) {
    case WDL_LOSS:
        beta = std::min(beta, -TB_WIN_SCORE);
        if (alpha < -TB_WIN_SCORE)
            return false;
        score = -TB_WIN_SCORE;
        bound = BOUND_UPPER;
        break;
    case WDL_BLESSED_LOSS:
        score = TB_BLESSED_LOSS_SCORE;
        break;
    case WDL_CURSED_WIN:
        score = TB_CURSED_WIN_SCORE;
        break;
    case WDL_WIN:
        alpha = std::max(alpha, TB_WIN_SCORE);
        if (beta > TB_WIN_SCORE)
            return false;
        score = TB_WIN_SCORE;
        bound = BOUND_LOWER;
        break;
    default:
        score = DRAW_SCORE;
        break;
    }
    tt_store(position.key, score, bound, depth, MOVE_NONE, ply);
    return true;
}

} // namespace

void init_reductions() {
    for (int depth = 1; depth <= MAX_DEPTH; ++depth)
        for (int moves = 1; moves < 256; ++moves)
            reductions[depth][moves] = static_cast<int>(
                std::log(static_cast<double>(moves)) * std::log(static_cast<double>(depth)) / 2.25 +
                0.75);
}

void update_pv(SearchFrame* frame, Move move) {
    const SearchFrame* const next = frame + 1;
    // A line of the greatest length cannot grow.
    const int tail = std::min(next->pv_length, MAX_PLY - 1);
    frame->pv[0] = move;
    std::copy_n(next->pv, tail, frame->pv + 1);
    frame->pv_length = tail + 1;
}

// One function, because its steps share the window, the depth and what they learned; each step
// sees alpha, beta and depth as the steps before it left them.
int search(Position& position, SearchFrame* frame, int depth, int alpha, int beta, bool pv_node,
           int ply) {
    frame->pv_length = 0;
    if (stop_flag)
        return 0;
    count_node();
    if (node_count % WATCH_INTERVAL == 0 && iteration_depth >= 2)
        watch_all();
    sel_depth = std::max(sel_depth, ply);
    if (ply >= MAX_PLY)
        return evaluate(position);
    if (depth <= 0)
        return quiescence(position, frame, alpha, beta, ply);

    // Draws by the fifty-move rule and by repetition.
    if (position.halfmove >= 100 || is_repetition(position))
        return DRAW_SCORE;

    // Mate-distance pruning: no score from here beats a mate already found nearer the root.
    const int entry_alpha = alpha;
    alpha = std::max(alpha, ply - MATE_VALUE);
    beta = std::min(beta, MATE_VALUE - 1 - ply);
    if (alpha >= beta)
        return alpha;

    // Evaluated before the table is read, although a cut-off there leaves it without use: meanwhile
    // the memory brings the entry, which takes longer than all else at a node.
    const LegalityMasks legality = legality_masks(position);
    const bool checked = legality.checkers != 0;
    int static_eval = SCORE_NONE;
    bool improving = false;
    if (!checked) {
        static_eval = evaluate(position);
        const int earlier = ply >= 2 ? (frame - 2)->static_eval : SCORE_NONE;
        improving = earlier != SCORE_NONE && static_eval > earlier;
    }
    frame->static_eval = static_eval;

    // Table read. A singular probe reads the entry of the whole node: it may use the entry's move
    // and bound, but neither cuts off on it nor replaces it.
    const bool singular_probe = frame->excluded_move != MOVE_NONE;
    const TTEntry* const entry = tt_probe(position.key);
    const bool tt_hit = entry != nullptr;
    const Move tt_move = tt_hit ? entry->move : MOVE_NONE;
    const int tt_score = tt_hit ? score_from_table(entry->score, ply) : SCORE_NONE;
    const int tt_depth = tt_hit ? entry->depth : 0;
    const int tt_bound = tt_hit ? entry->bound : BOUND_UPPER;

    if (!pv_node && !singular_probe) {
        if (tt_hit && tt_depth >= depth && tt_bound_cuts(tt_bound, tt_score, alpha, beta))
            return tt_score;
        int table_score;
        if (may_probe_tables(position) &&
            probe_tables(position, depth, ply, alpha, beta, table_score))
            return table_score;
    }

    if (!pv_node && !checked) {
        // Reverse futility: so far above beta that a few plies will not change it.
        const int margin =
            depth * (improving ? REVERSE_FUTILITY_MARGIN_IMPROVING : REVERSE_FUTILITY_MARGIN);
        if (depth <= REVERSE_FUTILITY_DEPTH && static_eval - margin >= beta &&
            static_eval < MATE_BOUND)
            return static_eval - margin;

        // Razoring: so far below alpha that only captures can help.
        if (depth < RAZOR_DEPTH) {
            if (static_eval + RAZOR_MARGIN <= alpha)
                return quiescence(position, frame, alpha, beta, ply);
        } else if (static_eval >= beta) {
            // Null move: if passing the turn holds beta, a move will.
            if (has_piece_besides_pawns(position)) {
                const int reduction = depth / 4 + 3 + (improving ? 1 : 0);
                frame->current_move = MOVE_NULL;
                make_null_move(position);
                tt_prefetch(position.key);
                const int score = -search(position, frame + 1, depth - reduction - 1, -beta,
                                          -beta + 1, false, ply + 1);
                unmake_null_move(position);
                if (score >= beta)
                    return score < MATE_BOUND ? score : beta;
            }

            // ProbCut: a good capture that stays well above beta in a shallow search.
            if (depth >= PROBCUT_DEPTH) {
                const int probcut_beta = beta + PROBCUT_MARGIN;
                Move captures[MAX_MOVES];
                const Move* const end = generate_captures(position, captures);
                for (const Move* move = captures; move != end; ++move) {
                    if (see(position, *move) < 0 || !move_is_legal(position, legality, *move))
                        continue;
                    make_move(position, *move);
                    int score =
                        -quiescence(position, frame + 1, -probcut_beta, -probcut_beta + 1, ply + 1);
                    if (score >= probcut_beta)
                        score = -search(position, frame + 1, depth - PROBCUT_REDUCTION,
                                        -probcut_beta, -probcut_beta + 1, false, ply + 1);
                    unmake_move(position, *move);
                    if (score >= probcut_beta)
                        return score;
                }
            }
        }
    }

    // Internal reduction: without a table move the node is not worth its full depth.
    if (tt_move == MOVE_NONE && depth >= INTERNAL_REDUCTION_DEPTH)
        --depth;

    const PreviousMove previous = previous_move_of(position, (frame - 1)->current_move);
    MovePicker picker;
    init_picker(picker, checked, tt_move, ply, previous);
    int best_score = -SCORE_INFINITE;
    Move best_move = MOVE_NONE;
    int moves_searched = 0;
    bool passed_over = false; // some legal move was left out without a search
    // Futility: too far below alpha for a quiet move to matter.
    const bool may_skip_quiets = !pv_node && !checked;
    const int futility_margin = depth * (improving ? FUTILITY_MARGIN_IMPROVING : FUTILITY_MARGIN);
    bool skip_quiets =
        may_skip_quiets && depth <= FUTILITY_DEPTH && static_eval + futility_margin <= alpha;
    Move quiets[MAX_MOVES];
    int quiet_count = 0;

    while (true) {
        // Move-count pruning: enough moves were tried.
        if (may_skip_quiets && depth <= LMP_DEPTH && moves_searched >= lmp_limits[improving][depth])
            skip_quiets = true;
        const Move move = next_move(picker, position, skip_quiets);
        if (move == MOVE_NONE)
            break;
        if (move == frame->excluded_move || (ply == 0 && is_root_excluded(move))) {
            passed_over = true;
            continue;
        }
        if (!move_is_legal(position, legality, move))
            continue;

        const bool capture = is_capture(move);
        const bool quiet = !capture && !is_promotion(move);
        if (!pv_node) {
            // Exchange pruning.
            if (capture && depth <= SEE_PRUNING_DEPTH &&
                exchange_of(picker, position, move) < -SEE_PRUNING_MARGIN * depth) {
                passed_over = true;
                continue;
            }
            if (skip_quiets && quiet) { // the table move
                passed_over = true;
                continue;
            }
        }

        // Extensions: out of check, and a table move without which the node falls short.
        int extension = 0;
        if (checked) {
            extension = 1;
        } else if (depth >= SINGULAR_DEPTH && move == tt_move && tt_depth >= depth - 3 &&
                   (tt_bound == BOUND_EXACT || tt_bound == BOUND_LOWER)) {
            const int singular_beta = tt_score - 2 * depth;
            frame->excluded_move = move;
            const int score =
                search(position, frame, depth / 2, singular_beta - 1, singular_beta, false, ply);
            frame->excluded_move = MOVE_NONE;
            extension = score < singular_beta ? 1 : 0;
        }

        frame->current_move = move;
        const int side = position.side;
        const int piece = position.board[move_from(move)];
        make_move(position, move);
        tt_prefetch(position.key);
        ++moves_searched;
        const int new_depth = depth + extension - 1;

        int score;
        if (moves_searched == 1) {
            score = -search(position, frame + 1, new_depth, -beta, -alpha, pv_node, ply + 1);
        } else {
            // Late-move reduction.
            int reduction = 0;
            if (!checked && quiet && depth >= LMR_DEPTH && moves_searched >= LMR_MOVES) {
                reduction = reductions[depth][std::min(moves_searched, 255)];
                reduction -= pv_node ? 1 : 0;
                reduction += improving ? 0 : 1;
                reduction -= history_score(side, piece, move, previous) / HISTORY_PER_PLY;
                reduction = std::max(reduction, 0);
            }
            score = -search(position, frame + 1, new_depth - reduction, -alpha - 1, -alpha, false,
                            ply + 1);
            if (score > alpha && reduction > 0)
                score = -search(position, frame + 1, new_depth, -alpha - 1, -alpha, false, ply + 1);
            if (score > alpha && score < beta)
                score = -search(position, frame + 1, new_depth, -beta, -alpha, true, ply + 1);
        }
        unmake_move(position, move);
        if (stop_flag)
            return 0;

        // The list can be full only where a colliding table move adds to a whole list.
        if (quiet && quiet_count < MAX_MOVES)
            quiets[quiet_count++] = move;
        if (score <= best_score)
            continue;
        best_score = score;
        best_move = move;
        update_pv(frame, move);
        if (score <= alpha)
            continue;
        alpha = score;
        if (alpha >= beta) {
            if (quiet)
                record_quiet_cutoff(position, move, quiets, quiet_count, depth, ply, previous);
            break;
        }
    }

    if (moves_searched == 0) {
        if (passed_over || (skip_quiets && has_legal_quiet(position, legality)))
            return alpha;
        return checked ? ply - MATE_VALUE : DRAW_SCORE;
    }
    if (!singular_probe) {
        const std::uint8_t bound = best_score >= beta         ? BOUND_LOWER
                                   : best_score > entry_alpha ? BOUND_EXACT
                                                              : BOUND_UPPER;
        tt_store(position.key, best_score, bound, depth, best_move, ply);
    }
    return best_score;
}

} // namespace brindlemoth
