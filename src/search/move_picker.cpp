#include "search/move_picker.h"

#include "movegen/movegen.h"
#include "search/see.h"

namespace brindlemoth {

namespace {

constexpr int ALREADY_TRIED = -999999; // the table move in the later stages
constexpr int KILLER_SCORE = 800000;
constexpr int OLDER_KILLER_SCORE = 700000;
constexpr int COUNTERMOVE_SCORE = 600000;
constexpr int EVASION_TT_SCORE = 2000000;
constexpr int EVASION_GOOD_CAPTURE_SCORE = 1000000;
constexpr int EVASION_PROMOTION_SCORE = 900000;
constexpr int EVASION_BAD_CAPTURE_SCORE = -500000;

// A table move of another position whose key collides must not be played into a broken record:
// what make_move() takes for granted of the special moves is asked for here.
bool special_move_fits(const Position& position, Move move) {
    const int flag = move_flag(move);
    const int us = position.side;
    if (flag == FLAG_QUIET || flag == FLAG_CAPTURE)
        return true;
    if (flag == FLAG_SHORT_CASTLING || flag == FLAG_LONG_CASTLING) {
        const int home = us == WHITE ? A1 : A8;
        const int corner = flag == FLAG_SHORT_CASTLING ? home + 7 : home;
        const int rook_to = flag == FLAG_SHORT_CASTLING ? home + 5 : home + 3;
        const int king_to = flag == FLAG_SHORT_CASTLING ? home + 6 : home + 2;
        return move_from(move) == home + 4 && move_to(move) == king_to &&
               position.board[home + 4] == make_piece(us, KING) &&
               position.board[corner] == make_piece(us, ROOK) &&
               position.board[rook_to] == EMPTY_SQUARE && position.board[king_to] == EMPTY_SQUARE;
    }
    if (position.board[move_from(move)] != make_piece(us, PAWN))
        return false;
    const int behind = us == WHITE ? move_to(move) - 8 : move_to(move) + 8;
    if (flag == FLAG_EN_PASSANT)
        return behind >= 0 && behind < SQUARE_COUNT &&
               position.board[behind] == make_piece(us ^ 1, PAWN) &&
               position.board[move_to(move)] == EMPTY_SQUARE;
    if (flag == FLAG_DOUBLE_PUSH)
        return rank_of(move_from(move)) == (us == WHITE ? 1 : 6);
    return true;
}

// Whether the table move can be tried before anything is generated. The path of a slider, pawn
// geometry and castling rights are not looked at: a matching key vouches for them.
bool tt_move_is_playable(const Position& position, Move move) {
    if (move == MOVE_NONE || move == MOVE_NULL)
        return false;
    const int us = position.side;
    const int moved = position.board[move_from(move)];
    const int target = position.board[move_to(move)];
    if (moved == EMPTY_SQUARE || piece_colour(moved) != us)
        return false;
    const int flag = move_flag(move);
    if (is_capture(move)) {
        if (flag != FLAG_EN_PASSANT && (target == EMPTY_SQUARE || piece_colour(target) == us))
            return false;
    } else if (flag != FLAG_SHORT_CASTLING && flag != FLAG_LONG_CASTLING &&
               target != EMPTY_SQUARE) {
        return false;
    }
    return special_move_fits(position, move);
}

// Starts a stage on the moves that a generator has written up to `end`.
void start_list(MovePicker& picker, const Move* end, int stage) {
    set_count(picker.list, static_cast<int>(end - picker.list.moves));
    picker.stage = stage;
}

// What the ordering scores of a node's quiet moves are made of; see quiet_score().
struct QuietScores {
    const std::int16_t* butterfly;
    const std::int16_t (*continuation)[SQUARE_COUNT];
    Move killer, older_killer, countermove;

    int of(Move move, int piece) const {
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

QuietScores quiet_scores(int side, int ply, PreviousMove previous) {
    return {butterfly_history[side], continuation_history[previous.piece][previous.to],
            killers[ply][0], killers[ply][1], countermoves[previous.piece][previous.to]};
}

void score_captures(MovePicker& picker, const Position& position) {
    ScoredMoves& list = picker.list;
    for (int i = 0; i < list.count; ++i)
        list.keys[i] = list.moves[i] == picker.tt_move ? sort_key(ALREADY_TRIED, i, true)
                                                       : exchange_key(position, list.moves[i], i);
}

void score_quiets(MovePicker& picker, const Position& position) {
    ScoredMoves& list = picker.list;
    const QuietScores scores = quiet_scores(position.side, picker.ply, picker.previous);
    const Move tt_move = picker.tt_move;
    const int count = list.count;
    for (int i = 0; i < count; ++i) {
        const Move move = list.moves[i];
        list.keys[i] = sort_key(move == tt_move ? ALREADY_TRIED
                                                : scores.of(move, position.board[move_from(move)]),
                                i, true);
    }
}

int evasion_score(const MovePicker& picker, const Position& position, Move move) {
    if (move == picker.tt_move)
        return EVASION_TT_SCORE;
    if (is_capture(move)) {
        const int gain = see(position, move);
        return gain + (gain >= 0 ? EVASION_GOOD_CAPTURE_SCORE : EVASION_BAD_CAPTURE_SCORE);
    }
    if (is_promotion(move))
        return EVASION_PROMOTION_SCORE;
    return quiet_score(position, move, picker.ply, picker.previous);
}

// What the exchange of a capture is worth, back from its score.
int evasion_exchange(int score) {
    if (score == EVASION_TT_SCORE)
        return UNKNOWN_EXCHANGE;
    return score - (score >= EVASION_GOOD_CAPTURE_SCORE ? EVASION_GOOD_CAPTURE_SCORE
                                                        : EVASION_BAD_CAPTURE_SCORE);
}

void score_evasions(MovePicker& picker, const Position& position) {
    ScoredMoves& list = picker.list;
    for (int i = 0; i < list.count; ++i)
        list.keys[i] = sort_key(evasion_score(picker, position, list.moves[i]), i, true);
}

} // namespace

int quiet_score(const Position& position, Move move, int ply, PreviousMove previous) {
    return quiet_scores(position.side, ply, previous).of(move, position.board[move_from(move)]);
}

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
            picker.exchange = UNKNOWN_EXCHANGE;
            if (tt_move_is_playable(position, picker.tt_move))
                return picker.tt_move;
            picker.tt_move = MOVE_NONE; // never tried, so not to be filtered out later
            break;

        case STAGE_GEN_CAPTURES:
            start_list(picker, generate_captures(position, picker.list.moves), STAGE_GOOD_CAPTURES);
            score_captures(picker, position);
            break;

        case STAGE_GOOD_CAPTURES:
            while (true) {
                const SortKey best = best_exchange_key(picker.list, position, ALREADY_TRIED);
                if (score_of(best) <= ALREADY_TRIED)
                    break;
                picker.exchange = score_of(best);
                const Move move = hand_out(picker.list, best);
                if (picker.exchange >= 0)
                    return move;
                picker.bad_exchanges[picker.bad_count] = picker.exchange;
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
                const SortKey best = best_key(picker.list);
                if (score_of(best) > ALREADY_TRIED)
                    return hand_out(picker.list, best);
            }
            picker.stage = STAGE_BAD_CAPTURES;
            break;

        case STAGE_BAD_CAPTURES:
            if (picker.bad_index < picker.bad_count) {
                picker.exchange = picker.bad_exchanges[picker.bad_index];
                return picker.bad_captures[picker.bad_index++];
            }
            picker.stage = STAGE_DONE;
            return MOVE_NONE;

        case STAGE_GEN_EVASIONS:
            start_list(picker, generate_pseudo_legal(position, picker.list.moves), STAGE_EVASIONS);
            score_evasions(picker, position);
            break;

        case STAGE_EVASIONS:
            if (const SortKey best = best_key(picker.list); best != HANDED_OUT) {
                picker.exchange = evasion_exchange(score_of(best));
                return hand_out(picker.list, best);
            }
            picker.stage = STAGE_DONE;
            return MOVE_NONE;

        default:
            return MOVE_NONE;
        }
    }
}

} // namespace brindlemoth
