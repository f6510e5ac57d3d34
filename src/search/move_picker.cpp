#include "search/move_picker.h"

#include "movegen/movegen.h"
#include "search/see.h"

#include <utility>

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

// Moves the best entry not handed out yet to the picker's place and steps over it; returns its
// index. Selecting one step at a time leaves a list that cuts off early unsorted.
int select_next(MovePicker& picker) {
    const int i = picker.index++;
    const int best = pick_best_index(picker.scores, i, picker.count);
    std::swap(picker.moves[i], picker.moves[best]);
    std::swap(picker.scores[i], picker.scores[best]);
    return i;
}

// Starts a stage on the moves that a generator has written up to `end`.
void start_list(MovePicker& picker, const Move* end, int stage) {
    picker.count = static_cast<int>(end - picker.moves);
    picker.index = 0;
    picker.stage = stage;
}

void score_captures(MovePicker& picker, const Position& position) {
    for (int i = 0; i < picker.count; ++i)
        picker.scores[i] =
            picker.moves[i] == picker.tt_move ? ALREADY_TRIED : see(position, picker.moves[i]);
}

void score_quiets(MovePicker& picker, const Position& position) {
    for (int i = 0; i < picker.count; ++i)
        picker.scores[i] =
            picker.moves[i] == picker.tt_move
                ? ALREADY_TRIED
                : quiet_score(position, picker.moves[i], picker.ply, picker.previous);
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

} // namespace

int quiet_score(const Position& position, Move move, int ply, PreviousMove previous) {
    const int from = move_from(move);
    const int to = move_to(move);
    const int history = history_score(position.side, position.board[from], from, to, previous);
    if (move == killers[ply][0])
        return history + KILLER_SCORE;
    if (move == killers[ply][1])
        return history + OLDER_KILLER_SCORE;
    if (previous.piece != EMPTY_SQUARE && move == countermoves[previous.piece][previous.to])
        return history + COUNTERMOVE_SCORE;
    return history;
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
            if (tt_move_is_playable(position, picker.tt_move))
                return picker.tt_move;
            picker.tt_move = MOVE_NONE; // never tried, so not to be filtered out later
            break;

        case STAGE_GEN_CAPTURES:
            start_list(picker, generate_captures(position, picker.moves), STAGE_GOOD_CAPTURES);
            score_captures(picker, position);
            break;

        case STAGE_GOOD_CAPTURES:
            while (picker.index < picker.count) {
                const int i = select_next(picker);
                if (picker.scores[i] >= 0)
                    return picker.moves[i];
                if (picker.scores[i] > ALREADY_TRIED)
                    picker.bad_captures[picker.bad_count++] = picker.moves[i];
            }
            picker.stage = STAGE_GEN_QUIETS;
            break;

        case STAGE_GEN_QUIETS:
            if (skip_quiets) {
                picker.stage = STAGE_BAD_CAPTURES;
                break;
            }
            start_list(picker, generate_quiets(position, picker.moves), STAGE_QUIETS);
            score_quiets(picker, position);
            break;

        case STAGE_QUIETS:
            while (!skip_quiets && picker.index < picker.count) {
                const int i = select_next(picker);
                if (picker.scores[i] > ALREADY_TRIED)
                    return picker.moves[i];
            }
            picker.stage = STAGE_BAD_CAPTURES;
            break;

        case STAGE_BAD_CAPTURES:
            if (picker.bad_index < picker.bad_count)
                return picker.bad_captures[picker.bad_index++];
            picker.stage = STAGE_DONE;
            return MOVE_NONE;

        case STAGE_GEN_EVASIONS:
            start_list(picker, generate_pseudo_legal(position, picker.moves), STAGE_EVASIONS);
            for (int i = 0; i < picker.count; ++i)
                picker.scores[i] = evasion_score(picker, position, picker.moves[i]);
            break;

        case STAGE_EVASIONS:
            if (picker.index < picker.count)
                return picker.moves[select_next(picker)];
            picker.stage = STAGE_DONE;
            return MOVE_NONE;

        default:
            return MOVE_NONE;
        }
    }
}

} // namespace brindlemoth
