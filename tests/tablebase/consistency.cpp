// The proof that a table is read right: the value of a position follows from those of its moves.
// Two programs take this file: one for three men and a sample of four, one for all of four men.

#include "tablebase/probe.h"
#include "tablebase/syzygy.h"
#include "tablebase/table_support.h"

#include <algorithm>
#include <cstdlib>
#include <gtest/gtest.h>

namespace brindlemoth {

namespace {

constexpr int MAX_REPORTS = 5;

struct Value {
    std::int8_t wdl;
    std::int16_t dtz;
};

Value probe(const ProbeBoard& board) {
    int success;
    const int wdl = syzygy_wdl(board, success);
    EXPECT_NE(success, PROBE_FAILED) << board_text(board);
    const int dtz = syzygy_dtz(board, success);
    EXPECT_NE(success, PROBE_FAILED) << board_text(board);
    return {static_cast<std::int8_t>(wdl), static_cast<std::int16_t>(dtz)};
}

constexpr std::int8_t UNKNOWN = 127;

// The values of the positions of one signature without en passant, by the squares of the men, as
// far as they were asked for.
struct ValueTable {
    Key key;
    std::vector<Value> values;
};

Value value_of(ValueTable& table, const ProbeBoard& board) {
    if (board.ep_square != 0 || board_material_key(board, false) != table.key)
        return probe(board);
    Value& value = table.values[packed(board)];
    if (value.wdl == UNKNOWN)
        value = probe(board);
    return value;
}

// What the moves of a position say about it.
struct ByMoves {
    int wdl;
    int dtz;
};

ByMoves value_by_moves(ValueTable& table, const ProbeBoard& board) {
    ProbeMove list[MAX_PROBE_MOVES];
    const ProbeMove* const end = board_legal_moves(board, list);
    if (end == list)
        return board_in_check(board) ? ByMoves{WDL_LOSS, -1} : ByMoves{WDL_DRAW, 0};

    struct Child {
        int wdl; // from the mover's view
        int dtz;
        bool zeroing;
        bool mate;
    };
    std::vector<Child> children;
    int best = WDL_LOSS;
    for (const ProbeMove* move = list; move != end; ++move) {
        ProbeBoard next;
        board_play(next, board, *move);
        const Value value = value_of(table, next);
        const bool mate = value.wdl == WDL_LOSS && value.dtz == -1 && board_is_mate(next);
        children.push_back({-value.wdl, -value.dtz, next.halfmove == 0, mate});
        best = std::max(best, -value.wdl);
    }

    // The winner takes the shortest way to a zeroing move, the loser the longest.
    int dtz = 0;
    for (const Child& child : children) {
        if (child.wdl != best)
            continue;
        int distance = child.mate || child.zeroing ? wdl_to_dtz[child.wdl + 2] : child.dtz;
        if (!child.mate && !child.zeroing)
            distance += distance > 0 ? 1 : distance < 0 ? -1 : 0;
        if (dtz == 0 || distance < dtz)
            dtz = distance;
    }
    return {best, dtz};
}

bool distances_fit(int dtz, int by_moves, int tolerance) {
    const auto sign = [](int distance) { return (distance > 0) - (distance < 0); };
    return sign(dtz) == sign(by_moves) && std::abs(dtz - by_moves) <= tolerance;
}

std::vector<std::string> judged_signatures() {
    std::vector<std::string> names = ALL_POSITIONS ? four_men_signatures() : three_men_signatures();
    if (!ALL_POSITIONS)
        names.emplace_back("KPvKP");
    return names;
}

} // namespace

using Consistency = testing::TestWithParam<std::string>;

// Checks every position of the signature, up to reflections of the board, against its moves: value
// and distance. Also that one of the position's images has the same value, with the colours
// exchanged for half of them.
TEST_P(Consistency, ValuesFollowFromTheirMoves) {
    SKIP_WITHOUT_TABLES();
    syzygy_init(syzygy_directory().c_str());
    const std::string signature = GetParam();
    const std::size_t men = signature_men(signature).size();
    // A table that counts moves instead of plies has lost the last bit of some distances.
    const int tolerance = men > 3 ? 1 : 0;
    const unsigned one_in = men > 3 && !ALL_POSITIONS ? 37 : 1;
    ValueTable table{0, std::vector<Value>(std::size_t{2} << (6 * men), Value{UNKNOWN, 0})};
    unsigned positions = 0;
    int wrong = 0;
    for_all_boards(signature, [&](const ProbeBoard& board) {
        if (!stands_for_its_images(board) || ++positions % one_in != 0)
            return;
        table.key = board_material_key(board, false);
        const Value value = value_of(table, board);
        const ByMoves expected = value_by_moves(table, board);
        int success;
        const int same = syzygy_wdl(image(board, positions), success);
        if (value.wdl == expected.wdl && distances_fit(value.dtz, expected.dtz, tolerance) &&
            value.wdl == same)
            return;
        if (++wrong <= MAX_REPORTS)
            ADD_FAILURE() << signature << ": " << board_text(board) << "\nvalue " << int{value.wdl}
                          << ", in another image " << same << ", distance " << value.dtz
                          << "; by its moves " << expected.wdl << " and " << expected.dtz;
    });
    EXPECT_EQ(wrong, 0) << "of " << positions;
    EXPECT_GT(positions, 0U);
}

INSTANTIATE_TEST_SUITE_P(Tables, Consistency, testing::ValuesIn(judged_signatures()),
                         [](const auto& test) { return test.param; });

} // namespace brindlemoth
