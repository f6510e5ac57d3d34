#include "tablegen/engine_comparison.h"

#include "board/bitboard.h"
#include "file/table_maker.h"
#include "support/support.h"
#include "tablebase/syzygy.h"
#include "tablebase/table_support.h"
#include "verification/table_reader.h"

#include <gtest/gtest.h>
#include <random>

namespace brindlemoth {

// The slots filled from a board that has the table's first-named side as white.
static tablegen::Placement placement_on(const tablegen::Layout& layout, const ProbeBoard& board) {
    tablegen::Placement placement{};
    Bitboard taken = 0;
    for (std::size_t slot = 0; slot < layout.men; ++slot) {
        Bitboard men =
            board_men(board, layout.side[slot] == tablegen::WHITE ? 1 : 0, layout.kind[slot]) &
            ~taken;
        placement[slot] = static_cast<std::uint8_t>(pop_lowest(men));
        taken |= square_bit(placement[slot]);
    }
    return placement;
}

static int solved_distance(const tablegen::Table& table, const ProbeBoard& board) {
    const tablegen::Placement placement = placement_on(table.layout, board);
    const tablegen::Side side = board.white_to_move == 1 ? tablegen::WHITE : tablegen::BLACK;
    if (board.ep_square == 0)
        return table.distance[side][cell_of(table.layout, placement)];
    const int pushed = board.ep_square + (side == tablegen::WHITE ? -8 : 8);
    std::size_t slot = 0;
    while (placement[slot] != pushed)
        ++slot;
    return distance_with_en_passant(table, placement, side, slot);
}

// Whether the distance of a decided position is read from a stream that counts plies. Where the
// file stores the other side to move, a reader looks one ply ahead, at the other side's values.
static bool is_exact(const tablegen::TableReader& reader, const tablegen::Table& table,
                     const ProbeBoard& board, int distance) {
    const int wdl = tablegen::wdl_of_distance(distance);
    if (board.ep_square != 0 || std::abs(wdl) != 2)
        return false;
    const tablegen::Side side = board.white_to_move == 1 ? tablegen::WHITE : tablegen::BLACK;
    const auto place = find_position(reader, table.layout, placement_on(table.layout, board), side);
    if (!place && reader.streams.size() != 1)
        return false;
    const int flags = place ? place->stream->flags : reader.streams[0].flags;
    const bool looks_up_win = (wdl == 2) == place.has_value();
    return (flags & (looks_up_win ? tablegen::DTZ_WINS_IN_PLIES : tablegen::DTZ_LOSSES_IN_PLIES)) !=
           0;
}

Comparison compare_with_engine(const tablegen::Table& table, const std::string& directory) {
    Comparison result;
    const std::string name = name_of(table.layout.signature);
    tablegen::TableReader reader;
    EXPECT_EQ(open_table(directory + "/" + name + tablegen::DTZ_EXTENSION, table.layout.signature,
                         true, reader),
              "");
    for_all_boards(name, [&](const ProbeBoard& board) {
        const int expected = solved_distance(table, board);
        int success = 0;
        const int wdl = syzygy_wdl(board, success);
        const bool wdl_right = success != 0 && expected != tablegen::ILLEGAL_DISTANCE &&
                               wdl == tablegen::wdl_of_distance(expected);
        const int dtz = syzygy_dtz(board, success);
        const int short_by = std::abs(expected) - std::abs(dtz);
        const bool exact = is_exact(reader, table, board, expected);
        const bool dtz_right = success != 0 && (expected > 0) == (dtz > 0) &&
                               (expected < 0) == (dtz < 0) &&
                               (short_by == 0 || (short_by == 1 && !exact));
        result.exact_dtz += exact ? 1 : 0;
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

void write_table(const tablegen::Table& table, const std::string& directory, int threads) {
    for (const tablegen::TableFile& file :
         {make_wdl_file(table, threads, {}), make_dtz_file(table, threads, {})}) {
        const std::string path =
            directory + "/" + name_of(file.signature) + extension_of(file.kind);
        ASSERT_EQ(tablegen::write_whole_file(path, lay_out(file)), "");
    }
}

// A random legal position of the signature, as a FEN.
static std::string random_fen(const tablegen::Signature& signature, std::mt19937_64& random) {
    const std::vector<Man> men = signature_men(name_of(signature));
    while (true) {
        const bool white_to_move = random() % 2 == 0;
        ProbeBoard board = empty_board(white_to_move);
        std::string squares(64, '1');
        for (const Man man : men) {
            const auto square = static_cast<int>(random() % 64);
            put_man(board, man, square);
            squares[static_cast<std::size_t>(square)] =
                (man.white == 1 ? " PNBRQK" : " pnbrqk")[man.type];
        }
        if (popcount(board.white | board.black) != static_cast<int>(men.size()) ||
            !board_is_sane(board))
            continue;
        std::string fen;
        for (std::size_t rank = 8; rank-- > 0;)
            fen += squares.substr(8 * rank, 8) + (rank > 0 ? "/" : "");
        return fen + (white_to_move ? " w - - 0 1" : " b - - 0 1");
    }
}

static std::vector<Move> root_moves(const std::vector<tablegen::Signature>& signatures,
                                    int positions, const std::string& directory) {
    syzygy_init(directory.c_str());
    std::mt19937_64 random(20240611);
    std::vector<Move> moves;
    for (int i = 0; i < positions; ++i) {
        Position position = position_from(
            random_fen(signatures[static_cast<std::size_t>(i) % signatures.size()], random));
        Move move = MOVE_NONE;
        EXPECT_TRUE(syzygy_root_move(position, move));
        moves.push_back(move);
    }
    return moves;
}

int count_different_root_moves(const std::vector<tablegen::Signature>& signatures, int positions,
                               const std::string& one, const std::string& other) {
    const std::vector<Move> moves = root_moves(signatures, positions, one);
    const std::vector<Move> others = root_moves(signatures, positions, other);
    int different = 0;
    for (std::size_t i = 0; i < moves.size(); ++i)
        different += moves[i] != others[i] ? 1 : 0;
    return different;
}

} // namespace brindlemoth
