#include "search/search.h"

#include "board/bitboard.h"
#include "board/make_move.h"
#include "eval/evaluate.h"
#include "movegen/generate.h"
#include "movegen/legality.h"
#include "search/history.h"
#include "search/limit_check.h"
#include "search/move_picker.h"
#include "search/see.h"
#include "search/transposition.h"
#include "tablebase/syzygy.h"

#include <algorithm>
#include <cmath>

namespace brindlemoth {

namespace {

// Depths are in plies. _MAX_DEPTH: at this depth and below. _MIN_DEPTH: at this depth and above.
// Margins are in centipawns.
constexpr int REVERSE_FUTILITY_MAX_DEPTH = 8;
constexpr int REVERSE_FUTILITY_MARGIN = 90; // for each ply of depth
constexpr int REVERSE_FUTILITY_MARGIN_IMPROVING = 70;
constexpr int RAZOR_MAX_DEPTH = 2;
constexpr int RAZOR_MARGIN = 300;
constexpr int NULL_MOVE_MIN_DEPTH = 3;
constexpr int NULL_MOVE_REDUCTION = 3; // and one more for NULL_MOVE_DEPTH_STEP plies of depth
constexpr int NULL_MOVE_DEPTH_STEP = 4;
constexpr int PROBCUT_MIN_DEPTH = 5;
constexpr int PROBCUT_MARGIN = 200;
constexpr int PROBCUT_REDUCTION = 4;
constexpr int INTERNAL_REDUCTION_MIN_DEPTH = 4;
constexpr int SEE_PRUNING_MAX_DEPTH = 8;
constexpr int SEE_PRUNING_MARGIN = 50; // for each ply of depth
constexpr int FUTILITY_MAX_DEPTH = 3;
constexpr int FUTILITY_MARGIN = 125; // for each ply of depth
constexpr int FUTILITY_MARGIN_IMPROVING = 175;
constexpr int SINGULAR_MIN_DEPTH = 8;
constexpr int SINGULAR_MAX_DEPTH_GAP = 3; // plies by which the entry may be shallower than the node
constexpr int SINGULAR_MARGIN = 2;        // for each ply of depth
constexpr int LMR_MIN_DEPTH = 3;
constexpr int LMR_MIN_MOVES = 4;      // counting the move itself
constexpr int HISTORY_PER_PLY = 8192; // history that is worth one ply of reduction
constexpr int FIFTY_MOVES = 100;      // plies without capture and pawn move that make a draw

// Quiet moves searched before the rest is pruned, by improving and depth.
constexpr int LMP_MAX_DEPTH = 6;
constexpr int lmp_limits[2][LMP_MAX_DEPTH + 1] = {{0, 3, 5, 8, 13, 18, 25},
                                                  {0, 5, 8, 12, 18, 25, 35}};

// Late-move reduction by remaining depth and number of moves searched; row and column 0 are 0.
constexpr int REDUCTION_MOVES = 256;
int reductions[MAX_DEPTH + 1][REDUCTION_MOVES];

// Whether the position occurred before, in the tree or in the game before it. Only positions since
// the last capture or pawn move can be equal, and only every other one has the same side to move.
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
    return std::count(root_excluded, root_excluded + root_excluded_count, move) != 0;
}

// What the transposition table has of a node. Without an entry the other fields are neutral.
struct HashResult {
    bool hit = false;
    Move move = MOVE_NONE;
    int score = SCORE_NONE;
    int depth = 0;
    int bound = BOUND_UPPER;
};

HashResult read_entry(Key key, int ply) {
    const TTEntry* const entry = tt_probe(key);
    if (entry == nullptr)
        return {};
    return {true, entry->move, score_from_table(entry->score, ply), entry->depth, entry->bound};
}

bool may_probe_tables(const Position& position) {
    return syzygy_probe_limit != 0 && position.castling == 0 && position.halfmove == 0 &&
           popcount(position.all_pieces) <= syzygy_probe_limit;
}

// Probes the endgame tables. Returns true when the node is cut off, with its score. Otherwise a win
// or loss may have narrowed the window.
bool probe_tables(const Position& position, int depth, int ply, int& alpha, int& beta, int& score) {
    ProbeBoard board;
    board_from_position(position, board);
    int success;
    const int wdl = syzygy_wdl(board, success);
    if (success == PROBE_FAILED)
        return false;
    count_node();

    constexpr int SCORES[] = {-TB_WIN_SCORE, TB_BLESSED_LOSS_SCORE, DRAW_SCORE, TB_CURSED_WIN_SCORE,
                              TB_WIN_SCORE};
    score = SCORES[wdl - WDL_LOSS];
    std::uint8_t bound = BOUND_EXACT;
    if (wdl == WDL_LOSS) {
        beta = std::min(beta, score);
        bound = BOUND_UPPER;
    } else if (wdl == WDL_WIN) {
        alpha = std::max(alpha, score);
        bound = BOUND_LOWER;
    }
    if (!tt_bound_cuts(bound, score, alpha, beta))
        return false;
    tt_store(position.key, score, bound, depth, MOVE_NONE, ply);
    return true;
}

// The score of a search after passing the turn. If it is at least beta, a move would be as good.
// The score of a mate against a passing side proves no mate, so it counts as beta.
int search_null_move(Position& position, SearchFrame* frame, int depth, int beta, bool improving,
                     int ply) {
    const int reduction = depth / NULL_MOVE_DEPTH_STEP + NULL_MOVE_REDUCTION + (improving ? 1 : 0);
    frame->current_move = MOVE_NULL;
    make_null_move(position);
    tt_prefetch(position.key);
    const int score =
        -search(position, frame + 1, depth - reduction - 1, -beta, -beta + 1, false, ply + 1);
    unmake_null_move(position);
    return score < MATE_BOUND ? score : std::min(score, beta);
}

// Searches the captures that do not lose material at less depth. Returns the score of the first
// that is well above beta, or -SCORE_INFINITE.
int search_probcut(Position& position, const LegalityMasks& legality, SearchFrame* frame, int depth,
                   int beta, int ply) {
    const int probcut_beta = beta + PROBCUT_MARGIN;
    Move captures[MAX_MOVES];
    const Move* const end = generate_captures(position, captures);
    for (const Move* move = captures; move != end; ++move) {
        if (see(position, *move) < 0 || !move_is_legal(position, legality, *move))
            continue;
        make_move(position, *move);
        int score = -quiescence(position, frame + 1, -probcut_beta, -probcut_beta + 1, ply + 1);
        if (score >= probcut_beta)
            score = -search(position, frame + 1, depth - PROBCUT_REDUCTION, -probcut_beta,
                            -probcut_beta + 1, false, ply + 1);
        unmake_move(position, *move);
        if (score >= probcut_beta)
            return score;
    }
    return -SCORE_INFINITE;
}

// Whether the hash move is singular: a search of half the depth without it fails low against a
// bound well below its score.
bool is_singular(Position& position, SearchFrame* frame, const HashResult& hash, int depth,
                 int ply) {
    if (depth < SINGULAR_MIN_DEPTH || hash.depth < depth - SINGULAR_MAX_DEPTH_GAP ||
        hash.bound == BOUND_UPPER)
        return false;
    const int singular_beta = hash.score - SINGULAR_MARGIN * depth;
    frame->excluded_move = hash.move;
    const int score =
        search(position, frame, depth / 2, singular_beta - 1, singular_beta, false, ply);
    frame->excluded_move = MOVE_NONE;
    return score < singular_beta;
}

// Plies by which the search of a late quiet move is reduced.
int late_move_reduction(int depth, int moves_searched, bool pv_node, bool improving, int history) {
    const int reduction = reductions[depth][std::min(moves_searched, REDUCTION_MOVES - 1)];
    return std::max(reduction - (pv_node ? 1 : 0) + (improving ? 0 : 1) - history / HISTORY_PER_PLY,
                    0);
}

} // namespace

void init_reductions() {
    constexpr double DIVISOR = 2.25;
    constexpr double OFFSET = 0.75;
    for (int depth = 1; depth <= MAX_DEPTH; ++depth)
        for (int moves = 1; moves < REDUCTION_MOVES; ++moves)
            reductions[depth][moves] =
                static_cast<int>(std::log(moves) * std::log(depth) / DIVISOR + OFFSET);
}

void update_pv(SearchFrame* frame, Move move) {
    const SearchFrame* const next = frame + 1;
    // A line of the greatest length cannot grow.
    const int tail = std::min(next->pv_length, MAX_PLY - 1);
    frame->pv[0] = move;
    std::copy_n(next->pv, tail, frame->pv + 1);
    frame->pv_length = tail + 1;
}

// The steps of a node share alpha, beta and depth: each uses them as the steps before it left them.
int search(Position& position, SearchFrame* frame, int depth, int alpha, int beta, bool pv_node,
           int ply) {
    frame->pv_length = 0;
    if (stop_flag)
        return 0;
    count_node();
    if (node_count % LIMIT_CHECK_INTERVAL == 0 && iteration_depth >= 2)
        check_limits();
    sel_depth = std::max(sel_depth, ply);
    if (ply >= MAX_PLY)
        return evaluate(position);
    if (depth <= 0)
        return quiescence(position, frame, alpha, beta, ply);

    if (position.halfmove >= FIFTY_MOVES || is_repetition(position))
        return DRAW_SCORE;

    // Mate-distance pruning: no score from here beats a mate already found nearer the root.
    const int entry_alpha = alpha;
    alpha = std::max(alpha, ply - MATE_VALUE);
    beta = std::min(beta, MATE_VALUE - 1 - ply);
    if (alpha >= beta)
        return alpha;

    // Evaluate before reading the hash entry: the parent prefetched its slot, and this work hides
    // the cache miss, even where a cutoff then wastes the evaluation.
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

    // A singular probe shares the entry with the node that started it: it uses the move and the
    // bound, but neither cuts off on the entry nor replaces it.
    const bool singular_probe = frame->excluded_move != MOVE_NONE;
    const HashResult hash = read_entry(position.key, ply);
    if (!pv_node && !singular_probe) {
        if (hash.hit && hash.depth >= depth && tt_bound_cuts(hash.bound, hash.score, alpha, beta))
            return hash.score;
        int table_score;
        if (may_probe_tables(position) &&
            probe_tables(position, depth, ply, alpha, beta, table_score))
            return table_score;
    }

    if (!pv_node && !checked) {
        // Reverse futility: so far above beta that a few plies will not change it.
        const int margin =
            depth * (improving ? REVERSE_FUTILITY_MARGIN_IMPROVING : REVERSE_FUTILITY_MARGIN);
        if (depth <= REVERSE_FUTILITY_MAX_DEPTH && static_eval - margin >= beta &&
            static_eval < MATE_BOUND)
            return static_eval - margin;
        // Razoring: so far below alpha that only captures can help.
        if (depth <= RAZOR_MAX_DEPTH && static_eval + RAZOR_MARGIN <= alpha)
            return quiescence(position, frame, alpha, beta, ply);
        if (depth >= NULL_MOVE_MIN_DEPTH && static_eval >= beta) {
            if (has_piece_besides_pawns(position)) {
                const int score = search_null_move(position, frame, depth, beta, improving, ply);
                if (score >= beta)
                    return score;
            }
            if (depth >= PROBCUT_MIN_DEPTH) {
                const int score = search_probcut(position, legality, frame, depth, beta, ply);
                if (score >= beta)
                    return score;
            }
        }
    }

    // Internal reduction: without a hash move the node is not worth its full depth.
    if (hash.move == MOVE_NONE && depth >= INTERNAL_REDUCTION_MIN_DEPTH)
        --depth;

    const PreviousMove previous = previous_move_of(position, (frame - 1)->current_move);
    MovePicker picker;
    init_picker(picker, checked, hash.move, ply, previous);
    int best_score = -SCORE_INFINITE;
    Move best_move = MOVE_NONE;
    int moves_searched = 0;
    bool move_skipped = false; // a move was excluded or pruned
    // Futility: too far below alpha for a quiet move to matter.
    const bool may_skip_quiets = !pv_node && !checked;
    const int futility_margin = depth * (improving ? FUTILITY_MARGIN_IMPROVING : FUTILITY_MARGIN);
    bool skip_quiets =
        may_skip_quiets && depth <= FUTILITY_MAX_DEPTH && static_eval + futility_margin <= alpha;
    Move quiets[MAX_MOVES]; // searched
    int quiet_count = 0;

    while (true) {
        // Move-count pruning.
        if (may_skip_quiets && depth <= LMP_MAX_DEPTH &&
            moves_searched >= lmp_limits[improving][depth])
            skip_quiets = true;
        const Move move = next_move(picker, position, skip_quiets);
        if (move == MOVE_NONE)
            break;
        if (move == frame->excluded_move || (ply == 0 && is_root_excluded(move))) {
            move_skipped = true;
            continue;
        }
        if (!move_is_legal(position, legality, move))
            continue;

        const bool capture = is_capture(move);
        const bool quiet = !capture && !is_promotion(move);
        if (!pv_node) {
            // SEE pruning.
            if (capture && depth <= SEE_PRUNING_MAX_DEPTH &&
                see_of_last(picker, position, move) < -SEE_PRUNING_MARGIN * depth) {
                move_skipped = true;
                continue;
            }
            // The picker skips the other quiet moves, but not the hash move.
            if (skip_quiets && quiet) {
                move_skipped = true;
                continue;
            }
        }

        // Extension: an evasion of check, or a singular hash move.
        const bool extended =
            checked || (move == hash.move && is_singular(position, frame, hash, depth, ply));
        const int new_depth = depth - 1 + (extended ? 1 : 0);

        frame->current_move = move;
        const int side = position.side;
        const int piece = position.board[move_from(move)];
        make_move(position, move);
        tt_prefetch(position.key);
        ++moves_searched;

        int score;
        if (moves_searched == 1) {
            score = -search(position, frame + 1, new_depth, -beta, -alpha, pv_node, ply + 1);
        } else {
            // A reduced search, if the move is late; then a full null-window search if that fails
            // high; then a search with the open window.
            int reduction = 0;
            if (!checked && quiet && depth >= LMR_MIN_DEPTH && moves_searched >= LMR_MIN_MOVES)
                reduction = late_move_reduction(depth, moves_searched, pv_node, improving,
                                                history_score(side, piece, move, previous));
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

        // The list can be full only if the hash move of another position adds to MAX_MOVES moves.
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
        if (move_skipped || (skip_quiets && has_legal_quiet(position, legality)))
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
