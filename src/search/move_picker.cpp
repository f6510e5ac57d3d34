#include "search/move_picker.h"

#include "board/castling.h"
#include "movegen/generate.h"
#include "search/see.h"

namespace brindlemoth {

namespace {

constexpr int SEARCHED_SCORE = -999999; // of the hash move in the stages after STAGE_TT
constexpr int KILLER_SCORE = 800000;
constexpr int OLDER_KILLER_SCORE = 700000;
constexpr int COUNTERMOVE_SCORE = 600000;
constexpr int EVASION_TT_SCORE = 2000000;
constexpr int EVASION_GOOD_CAPTURE_SCORE = 1000000;
constexpr int EVASION_PROMOTION_SCORE = 900000;
constexpr int EVASION_BAD_CAPTURE_SCORE = -500000;

// Whether the hash move, which can belong to another position with the same key, leaves the
// position consistent when it is made. Not tested are the path of a slider, the geometry of pawn
// moves and castling rights: such a move would be wrong, but do no harm.
bool is_playable(const Position& position, Move move) {
    if (move == MOVE_NONE || move == MOVE_NULL)
        return false;
    const int us = position.side;
    const int flag = move_flag(move);
    const int from = move_from(move);
    const int to = move_to(move);
    const auto& board = position.board;
    if (is_castling(move)) {
        const CastlingMove& castling = castling_move(us, flag);
        return from == castling.king_from && to == castling.king_to &&
               board[from] == make_piece(us, KING) &&
               board[castling.rook_from] == make_piece(us, ROOK) &&
               board[castling.rook_to] == EMPTY_SQUARE && board[to] == EMPTY_SQUARE;
    }
    if (board[from] == EMPTY_SQUARE || piece_colour(board[from]) != us)
        return false;
    if (is_capture(move) && flag != FLAG_EN_PASSANT
            ? board[to] == EMPTY_SQUARE || piece_colour(board[to]) == us
            : board[to] != EMPTY_SQUARE)
        return false;
    if (flag == FLAG_QUIET || flag == FLAG_CAPTURE)
        return true;
    if (board[from] != make_piece(us, PAWN))
        return false;
    if (flag == FLAG_DOUBLE_PUSH)
        return rank_of(from) == (us == WHITE ? 1 : 6);
    const int behind = to - forward_step(us);
    return flag != FLAG_EN_PASSANT ||
           (behind >= 0 && behind < SQUARE_COUNT && board[behind] == make_piece(us ^ 1, PAWN));
}

// Starts a stage with the moves that a generator has written up to `end`.
void start_list(MovePicker& picker, const Move* end, int stage) {
    set_count(picker.list, static_cast<int>(end - picker.list.moves));
    picker.stage = stage;
}

// The parts of a quiet move's score that are the same for all quiet moves of a node.
struct QuietScorer {
    const std::int16_t* butterfly;
    const std::int16_t (*continuation)[SQUARE_COUNT];
    Move killer, older_killer, countermove;

    // The history of the move, or a higher band for killers and the countermove.
    int score(Move move, int piece) const {
        const int history = butterfly[move_squares(move)] + continuation[piece][move_to(move)];
        if (move == killer)
            return history + KILLER_SCORE;
        if (move == older_killer)
            return history + OLDER_KILLER_SCORE;
        if (move == countermove)
            return history + COUNTERMOVE_SCORE;
        return history;
    }
};

QuietScorer quiet_scorer(const MovePicker& picker, int side) {
    const PreviousMove previous = picker.previous;
    return {butterfly_history[side], continuation_history[previous.piece][previous.to],
            killers[picker.ply][0], killers[picker.ply][1],
            countermoves[previous.piece][previous.to]};
}

void score_captures(MovePicker& picker, const Position& position) {
    ScoredMoves& list = picker.list;
    for (int i = 0; i < list.count; ++i)
        list.keys[i] = list.moves[i] == picker.tt_move ? make_sort_key(SEARCHED_SCORE, i, true)
                                                       : capture_key(position, list.moves[i], i);
}

void score_quiets(MovePicker& picker, const Position& position) {
    ScoredMoves& list = picker.list;
    const QuietScorer scorer = quiet_scorer(picker, position.side);
    const Move tt_move = picker.tt_move;
    const int count = list.count;
    for (int i = 0; i < count; ++i) {
        const Move move = list.moves[i];
        const int score =
            move == tt_move ? SEARCHED_SCORE : scorer.score(move, position.board[move_from(move)]);
        list.keys[i] = make_sort_key(score, i, true);
    }
}

void score_evasions(MovePicker& picker, const Position& position) {
    ScoredMoves& list = picker.list;
    const QuietScorer scorer = quiet_scorer(picker, position.side);
    for (int i = 0; i < list.count; ++i) {
        const Move move = list.moves[i];
        int score;
        if (move == picker.tt_move) {
            score = EVASION_TT_SCORE;
        } else if (is_capture(move)) {
            score = see(position, move);
            score += score >= 0 ? EVASION_GOOD_CAPTURE_SCORE : EVASION_BAD_CAPTURE_SCORE;
        } else {
            score = is_promotion(move) ? EVASION_PROMOTION_SCORE
                                       : scorer.score(move, position.board[move_from(move)]);
        }
        list.keys[i] = make_sort_key(score, i, true);
    }
}

// The SEE value of a capture among the evasions.
int see_of_evasion(int score) {
    if (score == EVASION_TT_SCORE)
        return UNKNOWN_SEE;
    return score - (score >= EVASION_GOOD_CAPTURE_SCORE ? EVASION_GOOD_CAPTURE_SCORE
                                                        : EVASION_BAD_CAPTURE_SCORE);
}

} // namespace

void init_picker(MovePicker& picker, bool in_check, Move tt_move, int ply, PreviousMove previous) {
    picker.stage = in_check ? STAGE_GEN_EVASIONS : STAGE_TT;
    picker.tt_move = tt_move;
    picker.ply = ply;
    picker.previous = previous;
    picker.bad_count = 0;
    picker.bad_index = 0;
}

Move next_move(MovePicker& picker, const Position& position, bool skip_quiets) {
    while (true) {
        switch (picker.stage) {
        case STAGE_TT:
            picker.stage = STAGE_GEN_CAPTURES;
            picker.last_see = UNKNOWN_SEE;
            if (is_playable(position, picker.tt_move))
                return picker.tt_move;
            picker.tt_move = MOVE_NONE; // if a generator gives it, it has not been searched
            break;

        case STAGE_GEN_CAPTURES:
            start_list(picker, generate_captures(position, picker.list.moves), STAGE_GOOD_CAPTURES);
            score_captures(picker, position);
            break;

        case STAGE_GOOD_CAPTURES:
            while (true) {
                const SortKey best = find_best_capture(picker.list, position, SEARCHED_SCORE);
                if (score_of(best) <= SEARCHED_SCORE)
                    break;
                picker.last_see = score_of(best);
                const Move move = take_move(picker.list, best);
                if (picker.last_see >= 0)
                    return move;
                picker.bad_see_values[picker.bad_count] = picker.last_see;
                picker.bad_captures[picker.bad_count++] = move;
            }
            picker.stage = STAGE_GEN_QUIETS;
            break;

        case STAGE_GEN_QUIETS:
            if (skip_quiets) {
                picker.stage = STAGE_BAD_CAPTURES;
                break;
            }
            start_list(picker, generate_quiets(position, picker.list.moves), STAGE_QUIETS);
            score_quiets(picker, position);
            break;

        case STAGE_QUIETS:
            if (!skip_quiets) {
                const SortKey best = find_best(picker.list);
                if (score_of(best) > SEARCHED_SCORE)
                    return take_move(picker.list, best);
            }
            picker.stage = STAGE_BAD_CAPTURES;
            break;

        case STAGE_BAD_CAPTURES:
            if (picker.bad_index < picker.bad_count) {
                picker.last_see = picker.bad_see_values[picker.bad_index];
                return picker.bad_captures[picker.bad_index++];
            }
            picker.stage = STAGE_DONE;
            return MOVE_NONE;

        case STAGE_GEN_EVASIONS:
            start_list(picker, generate_pseudo_legal(position, picker.list.moves), STAGE_EVASIONS);
            score_evasions(picker, position);
            break;

        case STAGE_EVASIONS:
            if (const SortKey best = find_best(picker.list); best != TAKEN_KEY) {
                picker.last_see = see_of_evasion(score_of(best));
                return take_move(picker.list, best);
            }
            picker.stage = STAGE_DONE;
            return MOVE_NONE;

        default:
            return MOVE_NONE;
        }
    }
}

} // namespace brindlemoth
