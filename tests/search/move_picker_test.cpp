#include "board/keys.h"
#include "board/make_move.h"
#include "movegen/generate.h"
#include "movegen/legality.h"
#include "search/move_picker.h"
#include "support/support.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <random>
#include <span>

using namespace brindlemoth;

constexpr int PLY = 5;

static std::vector<Move> pseudo_legal(const Position& position) {
    Move moves[MAX_MOVES];
    return {moves, generate_pseudo_legal(position, moves)};
}

static bool is_quiet(Move move) {
    return !is_capture(move) && !is_promotion(move);
}

static std::vector<Move> picked_moves(const Position& position, Move tt_move, PreviousMove previous,
                                      bool skip_quiets = false) {
    MovePicker picker;
    init_picker(picker, in_check(position), tt_move, PLY, previous);
    std::vector<Move> moves;
    while (const Move move = next_move(picker, position, skip_quiets)) {
        moves.push_back(move);
        if (moves.size() > MAX_MOVES + 1)
            break;
    }
    EXPECT_EQ(next_move(picker, position, skip_quiets), MOVE_NONE);
    return moves;
}

static std::vector<Move> sorted(std::vector<Move> moves) {
    std::sort(moves.begin(), moves.end());
    return moves;
}

static Move random_move(const std::vector<Move>& moves, std::mt19937_64& random) {
    return moves.empty() ? MOVE_NONE : moves[random() % moves.size()];
}

// The order of the moves is tested by the node counts of searches.
TEST(MovePicker, ReturnsEveryMoveOnce) {
    std::mt19937_64 random(51);
    int evasions = 0;
    for_random_positions(3000, 52, [&](Position& position) {
        const std::vector<Move> all = pseudo_legal(position);
        killers[PLY][0] = random_move(all, random);
        killers[PLY][1] = random_move(all, random);
        PreviousMove previous{EMPTY_SQUARE, 0};
        if (position.undo_count > 0 && random() % 4 != 0) {
            previous.to = static_cast<int>(random() % 64);
            previous.piece = static_cast<int>(random() % 12);
            countermoves[previous.piece][previous.to] = random_move(all, random);
        }
        for (const Move tt_move : {MOVE_NONE, random_move(all, random)}) {
            const std::vector<Move> moves = picked_moves(position, tt_move, previous);
            ASSERT_EQ(sorted(moves), sorted(all));
            ASSERT_TRUE(tt_move == MOVE_NONE || moves.front() == tt_move);
        }
        if (in_check(position)) {
            ++evasions;
            // Evasions include quiet moves even with skip_quiets.
            ASSERT_EQ(sorted(picked_moves(position, MOVE_NONE, previous, true)), sorted(all));
        } else {
            const Move tt_move = random_move(all, random);
            std::vector<Move> expected;
            std::copy_if(all.begin(), all.end(), std::back_inserter(expected),
                         [&](Move move) { return !is_quiet(move) || move == tt_move; });
            ASSERT_EQ(sorted(picked_moves(position, tt_move, previous, true)), sorted(expected));
        }
    });
    clear_search_memory();
    EXPECT_GT(evasions, 50);
}

TEST(History, EachSearchHalvesEveryCellTowardZero) {
    const std::span<std::int16_t> cells[] = {
        std::span(&butterfly_history[0][0], sizeof butterfly_history / 2),
        std::span(&continuation_history[0][0][0][0], sizeof continuation_history / 2)};
    const auto pattern = [](std::size_t i) { return static_cast<int>(i % 32749) - 16384; };
    for (const auto& table : cells)
        for (std::size_t i = 0; i < table.size(); ++i)
            table[i] = static_cast<std::int16_t>(pattern(i));
    killers[MAX_PLY - 1][1] = countermoves[PIECE_COUNT][63] = make_move_code(E2, E4, FLAG_QUIET);
    begin_search({}, WHITE);
    for (const auto& table : cells)
        for (std::size_t i = 0; i < table.size(); ++i)
            ASSERT_EQ(table[i], pattern(i) / 2) << i;
    EXPECT_EQ(killers[MAX_PLY - 1][1], MOVE_NONE);
    EXPECT_NE(countermoves[PIECE_COUNT][63], MOVE_NONE);
    clear_search_memory();
    for (const auto& table : cells)
        EXPECT_EQ(std::count(table.begin(), table.end(), 0), std::ssize(table));
    EXPECT_EQ(countermoves[PIECE_COUNT][63], MOVE_NONE);
}

// An entry of another position with the same key may hold any move at all.
TEST(MovePicker, NoHashMoveBreaksThePosition) {
    std::vector<Position> positions = {
        position_from("r3k2r/8/8/8/8/8/8/R3K2R w KQkq - 0 1"),
        position_from("r3k2r/8/8/8/8/8/8/R3K2R b KQkq - 0 1"),
        position_from("P6p/7P/pk6/1Pp5/2pP4/8/K6p/P6p b - d3 0 1"),
        position_from("P6p/7P/pk6/1Pp5/2pP4/8/K6p/P6p w - c6 0 1"),
    };
    for_random_positions(2000, 53, [&](Position& position) {
        if (position.undo_count % 100 == 40 && !in_check(position) && positions.size() < 20)
            positions.push_back(position);
    });
    MovePicker picker;
    for (Position& position : positions) {
        const Position before = position;
        for (int code = 0; code < 65536; ++code) {
            const Move move = static_cast<Move>(code);
            init_picker(picker, false, move, PLY, {EMPTY_SQUARE, 0});
            const Move first = next_move(picker, position, true);
            if (first != move || picker.stage != STAGE_GEN_CAPTURES)
                continue;
            make_move(position, move);
            ASSERT_TRUE(views_agree(position)) << move_to_text(move) << ' ' << move_flag(move);
            ASSERT_EQ(position.key, compute_key(position));
            ASSERT_GE(position.ep_square, A1) << move_to_text(move);
            ASSERT_LE(position.ep_square, NO_SQUARE) << move_to_text(move);
            unmake_move(position, move);
            ASSERT_TRUE(same_position(position, before))
                << move_to_text(move) << ' ' << move_flag(move);
        }
    }
}
