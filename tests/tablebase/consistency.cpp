#include "tablebase/consistency.h"

#include "board/bitboard.h"
#include "tablebase/probe.h"
#include "tablebase/syzygy.h"
#include "tablebase/table_support.h"

#include <algorithm>
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

// The values of all positions of one signature without en passant, by the squares of the men.
struct ValueTable {
    std::string signature;
    Key key;
    std::vector<Value> values;
};

std::size_t place_of(const ProbeBoard& board) {
    std::size_t place = board.white_to_move;
    for (const int white : {1, 0}) {
        for (int type = PROBE_KING; type >= PROBE_PAWN; --type) {
            for (Bitboard men = board_men(board, white, type); men != 0;)
                place = place * 64 + static_cast<std::size_t>(pop_lowest(men));
        }
    }
    return place;
}

ValueTable probe_all(const std::string& signature) {
    const std::size_t men = signature_men(signature).size();
    ValueTable table{signature, 0, std::vector<Value>(std::size_t{2} << (6 * men))};
    for_all_boards(signature, [&table](const ProbeBoard& board) {
        table.key = board_material_key(board, false);
        if (board.ep_square == 0)
            table.values[place_of(board)] = probe(board);
    });
    return table;
}

Value value_of(const ValueTable& table, const ProbeBoard& board) {
    const bool known = board.ep_square == 0 && board_material_key(board, false) == table.key;
    return known ? table.values[place_of(board)] : probe(board);
}

// What the moves of a position say about it.
struct ByMoves {
    int wdl;
    int dtz;
};

ByMoves value_by_moves(const ValueTable& table, const ProbeBoard& board) {
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

// A table that counts moves instead of plies loses the last bit of a distance, so that a position
// and its moves may disagree by one ply, and over two plies by two... but never in sign, nor across
// the border of the fifty-move rule.
bool distances_fit(int dtz, int by_moves) {
    const auto kind = [](int d) { return (d > 0) - (d < 0); };
    return kind(dtz) == kind(by_moves) && std::abs(dtz - by_moves) <= 1;
}

} // namespace

void check_consistency(const std::string& signature) {
    const ValueTable table = probe_all(signature);
    int positions = 0;
    int wrong = 0;
    int histogram[2][9] = {};
    for_all_boards(signature, [&](const ProbeBoard& board) {
        ++positions;
        const Value value = value_of(table, board);
        const ByMoves expected = value_by_moves(table, board);
        const int d = std::clamp(value.dtz - expected.dtz, -4, 4);
        ++histogram[value.dtz > 0][d + 4];
        if (value.wdl == expected.wdl && distances_fit(value.dtz, expected.dtz))
            return;
        if (++wrong <= MAX_REPORTS)
            ADD_FAILURE() << signature << ": " << board_text(board) << "\nvalue " << int(value.wdl)
                          << " distance " << value.dtz << ", by its moves " << expected.wdl
                          << " and " << expected.dtz;
    });
    for (auto& row : histogram) {
        for (int n : row)
            printf("%d ", n);
        printf("| ");
    }
    printf("\n");
    EXPECT_EQ(wrong, 0) << "of " << positions;
    EXPECT_GT(positions, 0);
}

} // namespace brindlemoth
