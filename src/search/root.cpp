#include "search/root.h"

#include "board/bitboard.h"
#include "movegen/legality.h"
#include "platform/clock.h"
#include "platform/standard_output.h"
#include "search/limit_check.h"
#include "search/search.h"
#include "tablebase/syzygy.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace brindlemoth {

int multipv_count = 1;

namespace {

constexpr int FULL_WINDOW_DEPTH = 4; // up to here every search has a full window
constexpr int ASPIRATION_WINDOW = 25;
constexpr int WIDEST_BOUND = 31900; // a bound beyond this becomes infinite

constexpr int ROOT_FRAME = 2; // the frames before it are those of plies -1 and -2
constexpr int FRAME_COUNT = MAX_PLY + 4;

void print_best_move(Move move) {
    print("bestmove %s\n", move_to_text(move));
}

// The move of the endgame tables, or MOVE_NONE when they have none.
Move probe_root(const Position& position) {
    if (syzygy_probe_limit == 0 || position.castling != 0 ||
        popcount(position.all_pieces) > syzygy_probe_limit)
        return MOVE_NONE;
    Move move = MOVE_NONE;
    return syzygy_root_move(position, move) ? move : MOVE_NONE;
}

// Searches with a window around the previous score. Only the bound that fails moves, in growing
// steps.
int search_with_aspiration(Position& position, SearchFrame* root, int depth, int previous) {
    int delta = ASPIRATION_WINDOW;
    int alpha = previous - delta;
    int beta = previous + delta;
    int score = search(position, root, depth, alpha, beta, true, 0);
    while (!stop_flag) {
        if (score <= alpha && alpha > -SCORE_INFINITE)
            alpha -= delta;
        else if (score >= beta && beta < SCORE_INFINITE)
            beta += delta;
        else
            break;
        delta *= 2;
        if (alpha < -WIDEST_BOUND)
            alpha = -SCORE_INFINITE;
        if (beta > WIDEST_BOUND)
            beta = SCORE_INFINITE;
        score = search(position, root, depth, alpha, beta, true, 0);
    }
    return score;
}

// Searches the lines of one iteration and prints each finished line.
void search_lines(Position& position, SearchFrame* root, int depth, int line_count) {
    for (int i = 0; i < line_count && !stop_flag; ++i) {
        root_excluded_count = i;
        for (int k = 0; k < i; ++k)
            root_excluded[k] = root_lines[k].move;
        RootLine& line = root_lines[i];
        const int score =
            depth <= FULL_WINDOW_DEPTH
                ? search(position, root, depth, -SCORE_INFINITE, SCORE_INFINITE, true, 0)
                : search_with_aspiration(position, root, depth, line.score);
        if ((stop_flag && depth > 1) || root->pv_length == 0)
            break;
        line.move = root->pv[0];
        line.score = score;
        line.pv_length = root->pv_length;
        std::copy_n(root->pv, root->pv_length, line.pv);
        if (stop_flag)
            break; // iteration 1 was stopped: its best move so far is used, but has no score
        print_info(depth, i, score, root->pv, root->pv_length);
    }
    root_excluded_count = 0;
}

} // namespace

void search_root(Position& position, const SearchLimits& limits) {
    begin_search(limits, position.side);
    if (const Move move = probe_root(position); move != MOVE_NONE) {
        print("info depth 1 seldepth 1 score cp 0 nodes 1 tbhits 1 pv %s\n", move_to_text(move));
        print_best_move(move);
        return;
    }

    MoveList root_moves;
    generate_legal(position, root_moves);
    if (root_moves.count == 0) {
        print_best_move(MOVE_NONE);
        return;
    }

    const int depth_limit = limits.depth > 0 ? std::min(limits.depth, MAX_DEPTH) : MAX_DEPTH;
    const int line_count = std::min(multipv_count, root_moves.count);
    SearchFrame frames[FRAME_COUNT];
    std::memset(static_cast<void*>(frames), 0, sizeof frames);
    Move best_move = MOVE_NONE;
    for (int depth = 1; depth <= depth_limit && !stop_flag; ++depth) {
        iteration_depth = depth;
        search_lines(position, frames + ROOT_FRAME, depth, line_count);
        if (root_lines[0].pv_length == 0)
            break;
        best_move = root_lines[0].move;
        if (tick_count() - search_time.start_time >= search_time.soft_limit)
            break;
        check_input();
    }
    print_best_move(best_move != MOVE_NONE ? best_move : root_moves.moves[0]);
}

unsigned long long nodes_per_second(std::uint64_t nodes, std::int64_t milliseconds) {
    constexpr std::uint64_t MILLISECONDS_PER_SECOND = 1000;
    return milliseconds > 0
               ? nodes * MILLISECONDS_PER_SECOND / static_cast<std::uint64_t>(milliseconds)
               : 0;
}

void print_info(int depth, int line_index, int score, const Move* pv, int pv_length) {
    constexpr int MAX_HEAD = 256; // characters before the moves
    constexpr int MAX_MOVE = 6;   // characters of a move with its blank
    const std::int64_t elapsed = tick_count() - search_time.start_time;

    // The line is one write, so that the reply to an isready never stands inside it.
    char line[MAX_HEAD + MAX_PLY * MAX_MOVE];
    char* out = line;
    const auto append = [&](const char* format, auto... values) {
        out += std::snprintf(out, static_cast<std::size_t>(line + sizeof line - out), format,
                             values...);
    };
    append("info depth %d seldepth %d", depth, sel_depth);
    if (multipv_count > 1)
        append(" multipv %d", line_index + 1);
    if (score >= MATE_BOUND)
        append(" score mate %d", (MATE_VALUE + 1 - score) / 2);
    else if (score <= -MATE_BOUND)
        append(" score mate %d", -((score + MATE_VALUE + 1) / 2));
    else
        append(" score cp %d", score);
    append(" nodes %llu nps %llu time %lld pv", static_cast<unsigned long long>(node_count),
           nodes_per_second(node_count, elapsed), static_cast<long long>(elapsed));
    for (int i = 0; i < pv_length; ++i)
        append(" %s", move_to_text(pv[i]));
    *out++ = '\n';
    write_output(line, static_cast<std::size_t>(out - line));
}

} // namespace brindlemoth
