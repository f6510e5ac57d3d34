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

tablegen::Cell cell_at(const SolvedTable& table, const tablegen::Placement& placement,
                       tablegen::Side side) {
    const std::size_t cell = cell_of(table.parts[0].table.layout, placement);
    const auto part =
        std::find_if(table.parts.begin(), table.parts.end(), [&](const tablegen::Part& p) {
            return cell - 64 * p.first_word < p.cells[side].size();
        });
    return part->cell(side, cell);
}

tablegen::Cell cell_of_board(const SolvedTable& table, const ProbeBoard& board) {
    const tablegen::Layout& layout = table.parts[0].table.layout;
    tablegen::Placement placement{};
    Bitboard taken = 0;
    for (std::size_t slot = 0; slot < layout.men; ++slot) {
        Bitboard men =
            board_men(board, layout.side[slot] == tablegen::WHITE ? 1 : 0, layout.kind[slot]) &
            ~taken;
        placement[slot] = static_cast<std::uint8_t>(pop_lowest(men));
        taken |= square_bit(placement[slot]);
    }
    return cell_at(table, placement, board.white_to_move == 1 ? tablegen::WHITE : tablegen::BLACK);
}

tablegen::TableFile make_file(const SolvedTable& table, FileKind kind) {
    tablegen::TableFile file = empty_file(kind, table.parts[0].table.layout.signature);
    for (const tablegen::Part& part : table.parts)
        add_part(part, {&file, 1}, 2, {});
    return file;
}

void write_files(const SolvedTable& table, const std::string& directory) {
    for (const FileKind kind : {FileKind::WDL, FileKind::DTZ}) {
        const tablegen::TableFile file = make_file(table, kind);
        const std::string path = directory + "/" + name_of(file.signature) + extension_of(kind);
        ASSERT_EQ(tablegen::write_whole_file(path, lay_out(file)), "");
    }
}

Comparison compare_with_engine(const SolvedTable& table, unsigned one_in) {
    Comparison result;
    std::mt19937 random(5);
    const std::string name = name_of(table.parts[0].table.layout.signature);
    for_all_boards(name, [&](const ProbeBoard& board) {
        if (board.ep_square != 0 || random() % one_in != 0)
            return; // the tables know no en passant
        const tablegen::Cell cell = cell_of_board(table, board);
        const int expected = tablegen::distance_of(cell);
        int success = 0;
        const int wdl = syzygy_wdl(board, success);
        const bool wdl_right =
            success != 0 && tablegen::is_legal(cell) && wdl == tablegen::wdl_of_distance(expected);
        const int dtz = syzygy_dtz(board, success);
        const int short_by = std::abs(expected) - std::abs(dtz);
        const bool dtz_right = success != 0 && (expected > 0) == (dtz > 0) &&
                               (expected < 0) == (dtz < 0) && (short_by == 0 || short_by == 1);
        ++result.positions;
        result.wrong_wdl += wdl_right ? 0 : 1;
        result.wrong_dtz += dtz_right ? 0 : 1;
        if (!(wdl_right && dtz_right) && result.first_wrong.empty()) {
            result.first_wrong = board_text(board) + ": solved " + std::to_string(expected) +
                                 ", read " + std::to_string(wdl) + " and " + std::to_string(dtz);
        }
    });
    return result;
}

} // namespace brindlemoth
