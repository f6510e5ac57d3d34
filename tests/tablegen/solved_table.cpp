#include "tablegen/solved_table.h"

#include "board/bitboard.h"
#include "file/table_maker.h"
#include "tablebase/syzygy.h"
#include "tablebase/table_support.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <mutex>
#include <random>

namespace brindlemoth {

using tablegen::FileKind;

const SolvedTable& solve_into(SolvedSet& set, const std::string& name, int threads) {
    for (const tablegen::Signature& signature :
         tablegen::closure({*tablegen::parse_signature(name)})) {
        if (set.tables.contains(name_of(signature)))
            continue;
        SolvedTable& table = set.solved[name_of(signature)];
        std::mutex adding;
        const auto add = [&](const tablegen::Part& part, int, const tablegen::Progress&) {
            const std::lock_guard<std::mutex> lock(adding);
            table.parts.push_back(part);
        };
        solve(signature, set.tables, threads, add, {}, set.limit);
    }
    return set.solved.at(name);
}

SolvedSet& shared_set() {
    static SolvedSet set;
    return set;
}

const SolvedTable& solved_table(const std::string& name) {
    return solve_into(shared_set(), name);
}

tablegen::Outcome outcome_of_board(const SolvedTable& table, const ProbeBoard& board) {
    const tablegen::Layout& layout = table.layout();
    tablegen::Placement placement{};
    Bitboard taken = 0;
    for (std::size_t slot = 0; slot < layout.men; ++slot) {
        Bitboard men =
            board_men(board, layout.side[slot] == tablegen::WHITE ? 1 : 0, layout.kind[slot]) &
            ~taken;
        placement[slot] = static_cast<std::uint8_t>(pop_lowest(men));
        taken |= square_bit(placement[slot]);
    }
    const tablegen::Side side = board.white_to_move == 1 ? tablegen::WHITE : tablegen::BLACK;
    const std::size_t cell = cell_of(layout, placement);
    return std::find_if(table.parts.begin(), table.parts.end(),
                        [&](const tablegen::Part& part) {
                            return cell - 64 * part.first_word < 64 * part.words;
                        })
        ->outcome(side, cell);
}

// What the board's own table says. It knows no en passant: that is judged.
static int solved_distance(const SolvedSet& set, const ProbeBoard& board) {
    if (board.ep_square != 0)
        return distance_by_moves(set, board);
    char name[16];
    board_material_name(board, name, false);
    if (const auto table = set.solved.find(name); table != set.solved.end())
        return tablegen::distance_of(outcome_of_board(table->second, board));
    return solved_distance(set, colours_exchanged(board));
}

int distance_by_moves(const SolvedSet& set, const ProbeBoard& board) {
    ProbeMove list[MAX_PROBE_MOVES];
    const ProbeMove* const end = board_legal_moves(board, list);
    if (end == list)
        return board_in_check(board) ? -1 : 0;
    // Short wins before long ones, then draws, then long losses before short ones.
    const auto worth = [](int distance) {
        return distance > 0 ? 10000 - distance : distance < 0 ? -10000 - distance : 0;
    };
    int best = 0;
    for (const ProbeMove* move = list; move != end; ++move) {
        ProbeBoard next;
        board_play(next, board, *move);
        const int after = solved_distance(set, next);
        int plies = std::abs(after) + 1;
        if (next.halfmove == 0 || (after == -1 && board_is_mate(next)))
            plies = std::abs(after) <= set.limit ? 1 : set.limit + 1;
        const int distance = after == 0 ? 0 : after < 0 ? plies : -plies;
        if (move == list || worth(distance) > worth(best))
            best = distance;
    }
    return best;
}

void for_positions(const SolvedTable& table, unsigned one_in,
                   const std::function<void(const ProbeBoard&, tablegen::Outcome)>& visit) {
    const tablegen::Layout& layout = table.layout();
    std::mt19937 random(7);
    for (const tablegen::Part& part : table.parts) {
        for (std::size_t i = 0; i < 64 * part.words; ++i) {
            const bool drawn = i % 64 != 0 || random() % one_in == 0;
            if (!drawn)
                i += 63;
            for (const tablegen::Side side : {tablegen::WHITE, tablegen::BLACK}) {
                const tablegen::Outcome outcome = part.outcome(side, 64 * part.first_word + i);
                if (!drawn || !tablegen::is_legal(outcome))
                    continue;
                tablegen::Placement placement =
                    tablegen::placement_of(layout, part.first_word + i / 64);
                placement[layout.men - 1] = static_cast<std::uint8_t>(i % 64);
                ProbeBoard board = empty_board(side == tablegen::WHITE);
                for (std::size_t slot = 0; slot < layout.men; ++slot)
                    put_man(board,
                            {layout.side[slot] == tablegen::WHITE ? 1 : 0, layout.kind[slot]},
                            placement[slot]);
                visit(board, outcome);
            }
        }
    }
}

void write_files(const SolvedTable& table, const std::string& directory) {
    for (const FileKind kind : {FileKind::WDL, FileKind::DTZ}) {
        tablegen::TableFile file = empty_file(kind, table.layout().signature);
        for (const tablegen::Part& part : table.parts)
            add_part(part, {&file, 1}, 2, {});
        tablegen::write_whole_file(table_path(directory, file.signature, kind), lay_out(file));
    }
}

int wrong_answers(const std::string& name, unsigned one_in, std::string& first_wrong) {
    unsigned positions = 0;
    int wrong = 0;
    const auto compare = [&](const ProbeBoard& board, int expected) {
        const ProbeBoard seen = image(board, ++positions);
        int success = 0;
        const int wdl = syzygy_wdl(seen, success);
        const bool wdl_right = success != 0 && wdl == tablegen::wdl_of_distance(expected);
        const int dtz = syzygy_dtz(seen, success);
        const int short_by = std::abs(expected) - std::abs(dtz);
        if (wdl_right && success != 0 && (expected > 0) == (dtz > 0) &&
            (expected < 0) == (dtz < 0) && (short_by == 0 || short_by == 1))
            return;
        if (wrong++ == 0)
            first_wrong = board_text(seen) + ": solved " + std::to_string(expected) + ", read " +
                          std::to_string(wdl) + " and " + std::to_string(dtz);
    };
    for_positions(solved_table(name), one_in,
                  [&](const ProbeBoard& board, tablegen::Outcome outcome) {
                      compare(board, tablegen::distance_of(outcome));
                      for (const ProbeBoard& with_ep : en_passant_boards(board))
                          compare(with_ep, distance_by_moves(shared_set(), with_ep));
                  });
    EXPECT_GT(positions, 0U) << name;
    return wrong;
}

void expect_engine_agrees(const std::string& name, unsigned one_in) {
    std::string first_wrong;
    EXPECT_EQ(wrong_answers(name, one_in, first_wrong), 0) << name << ": " << first_wrong;
}

} // namespace brindlemoth
