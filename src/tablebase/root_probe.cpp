#include "tablebase/root_probe.h"

#include "movegen/generate.h"
#include "movegen/legality.h"
#include "tablebase/probe.h"
#include "tablebase/syzygy.h"

namespace brindlemoth {

namespace {

constexpr std::int16_t ILLEGAL_MOVE = 0x7FFF;

struct RootMoves {
    ProbeMove moves[MAX_PROBE_MOVES];
    std::int16_t scores[MAX_PROBE_MOVES]; // distances to the next zeroing move, or ILLEGAL_MOVE
    int count;
};

// The distance of a move, counted from the root, by the board after it. Any mating move has
// distance 1, and needs no table.
int score_move(const ProbeBoard& next, int root_dtz, int& success) {
    if (root_dtz > 0 && board_is_mate(next))
        return 1;
    if (next.halfmove == 0) {
        const int wdl = -syzygy_wdl(next, success);
        return success == PROBE_FAILED ? 0 : wdl_to_dtz[wdl - WDL_LOSS];
    }
    const int value = -syzygy_dtz(next, success);
    if (success == PROBE_FAILED)
        return 0;
    return value > 0 ? value + 1 : value < 0 ? value - 1 : 0;
}

// The number of the first move with the lowest score of the sign (1 or -1), or -1 if there is none.
int lowest_score(const RootMoves& list, int sign) {
    int best = -1;
    for (int i = 0; i < list.count; ++i) {
        if (list.scores[i] == ILLEGAL_MOVE || list.scores[i] * sign <= 0)
            continue;
        if (best < 0 || list.scores[i] < list.scores[best])
            best = i;
    }
    return best;
}

// The engine's type of the promoted piece, or PAWN without promotion.
int promoted_type_of(ProbeMove move) {
    const int promotion = probe_move_promotion(move);
    return promotion == PROMOTE_NONE ? int{PAWN} : int{QUEEN} + PROMOTE_QUEEN - promotion;
}

// The legal move of the engine that is the same as `wanted`, or MOVE_NONE.
Move matching_move(const Position& position, ProbeMove wanted) {
    MoveList legal;
    generate_legal(position, legal);
    for (int i = 0; i < legal.count; ++i) {
        const Move move = legal.moves[i];
        const int promoted = is_promotion(move) ? promoted_type(move) : PAWN;
        if (move_from(move) == probe_move_from(wanted) && move_to(move) == probe_move_to(wanted) &&
            promoted == promoted_type_of(wanted))
            return move;
    }
    return MOVE_NONE;
}

} // namespace

std::uint16_t syzygy_root(const ProbeBoard& board) {
    int success;
    const int root_dtz = syzygy_dtz(board, success);
    if (success == PROBE_FAILED)
        return ROOT_FAILED;

    RootMoves list;
    list.count = static_cast<int>(board_moves(board, list.moves) - list.moves);
    unsigned draws = 0;
    for (int i = 0; i < list.count; ++i) {
        ProbeBoard next;
        if (!board_play(next, board, list.moves[i])) {
            list.scores[i] = ILLEGAL_MOVE;
            continue;
        }
        const int score = score_move(next, root_dtz, success);
        // Distances of undamaged files are far below the limit. A damaged file may hold any number.
        if (success == PROBE_FAILED || score >= ILLEGAL_MOVE || score <= -ILLEGAL_MOVE)
            return ROOT_FAILED;
        if (score == 0)
            ++draws;
        list.scores[i] = static_cast<std::int16_t>(score);
    }

    if (root_dtz > 0) {
        const int best = lowest_score(list, 1);
        return best < 0 ? ROOT_FAILED : list.moves[best];
    }
    if (root_dtz < 0) {
        const int best = lowest_score(list, -1);
        return best < 0 ? ROOT_MATED : list.moves[best];
    }
    if (draws == 0)
        return ROOT_STALEMATE;
    // All drawing moves are equally good. The material key makes the choice repeatable.
    Key skip = board_material_key(board, board.white_to_move == 0) % draws;
    for (int i = 0;; ++i)
        if (list.scores[i] == 0 && skip-- == 0)
            return list.moves[i];
}

bool syzygy_root_move(const Position& position, Move& move) {
    move = MOVE_NONE;
    ProbeBoard board;
    board_from_position(position, board);
    // A FEN can hold two values that no game reaches: an en-passant square without a pawn to
    // capture, and a clock that board_play() would count up to 0, the mark of a zeroing move. The
    // clock does not influence the choice, so it starts at 0.
    if (!ep_capture_possible(position))
        board.ep_square = 0;
    board.halfmove = 0;
    if (!board_is_sane(board))
        return false;
    const std::uint16_t result = syzygy_root(board);
    if (result == ROOT_FAILED)
        return false;
    if (result == ROOT_MATED || result == ROOT_STALEMATE)
        return true;

    move = matching_move(position, result);
    return move != MOVE_NONE;
}

} // namespace brindlemoth
