#include "tablebase/root_probe.h"

#include "movegen/legality.h"
#include "movegen/movegen.h"
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

// The distance that a move leads to, counted from the root. A mate needs no table: it is at
// distance 1 whatever the move.
int score_move(const ProbeBoard& next, int root_dtz, int& success) {
    if (root_dtz > 0 && board_is_mate(next))
        return 1;
    if (next.halfmove == 0)
        return wdl_to_dtz[2 - syzygy_wdl(next, success)];
    const int value = -syzygy_dtz(next, success);
    return value > 0 ? value + 1 : value < 0 ? value - 1 : 0;
}

// The first move with the lowest score that has the wanted sign (1 or -1), -1 if there is none.
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

// The flag of a move with these properties in the engine's own moves.
int flag_of(const Position& position, int from, int to, int promotion) {
    const bool pawn = piece_type(position.board[from]) == PAWN;
    const bool capture = position.board[to] != EMPTY_SQUARE;
    if (pawn && to == position.ep_square)
        return FLAG_EN_PASSANT;
    if (promotion != PROMOTE_NONE) {
        const int promoted = PROMOTE_KNIGHT - promotion; // 0 knight to 3 queen
        return (capture ? FLAG_PROMOTION_CAPTURE : FLAG_PROMOTION) + promoted;
    }
    if (capture)
        return FLAG_CAPTURE;
    const int distance = to > from ? to - from : from - to;
    return pawn && distance == 16 ? FLAG_DOUBLE_PUSH : FLAG_QUIET;
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
        // No genuine distance comes near the limit, but a damaged file may hold any.
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
    // Any drawing move will do; the material makes the choice a steady one.
    Key skip = board_material_key(board, board.white_to_move == 0) % draws;
    for (int i = 0;; ++i)
        if (list.scores[i] == 0 && skip-- == 0)
            return list.moves[i];
}

bool syzygy_root_move(Position& position, Move& move) {
    move = MOVE_NONE;
    ProbeBoard board;
    board_from_position(position, board);
    // Two fields of a FEN that the moves of a game could never have made: any en-passant square,
    // and a clock that would wrap to 0, the mark of a zeroing move. The clock has no say here.
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

    const int from = probe_move_from(result);
    const int to = probe_move_to(result);
    const int promotion = probe_move_promotion(result);
    move = make_move_code(from, to, flag_of(position, from, to, promotion));

    MoveList legal;
    generate_legal(position, legal);
    for (int i = 0; i < legal.count; ++i) {
        const Move candidate = legal.moves[i];
        const int promoted = is_promotion(candidate) ? promoted_type(candidate) : PAWN;
        const int wanted = promotion != PROMOTE_NONE ? 5 - promotion : PAWN;
        if (move_from(candidate) == from && move_to(candidate) == to && promoted == wanted) {
            move = candidate;
            break;
        }
    }
    return true;
}

} // namespace brindlemoth
