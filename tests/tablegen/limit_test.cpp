// Spoilt wins and saved losses: small endgames have none within fifty moves, so they are solved
// with a lower limit here, and every position is judged from its successors as the engine's move
// generator finds them.
#include "board/bitboard.h"
#include "board/make_move.h"
#include "movegen/legality.h"
#include "solver/solver.h"
#include "support/support.h"

#include <algorithm>
#include <array>
#include <gtest/gtest.h>
#include <map>
#include <random>

namespace brindlemoth {

static int solved_or_judged(Position& position, const tablegen::TableSet& tables, int limit);

// Both turn a distance after a move into one before it.
static int distance_by_zeroing(int after, int limit) {
    if (after == 0)
        return 0;
    const int size = std::abs(after) <= limit ? 1 : limit + 1;
    return after < 0 ? size : -size;
}

static int distance_by_quiet_move(int after) {
    return after == 0 ? 0 : after < 0 ? 1 - after : -1 - after;
}

// A mated side has the distance of one that loses by its next move.
static bool is_mate(Position& position, int distance) {
    MoveList list;
    if (distance == -1)
        generate_legal(position, list);
    return distance == -1 && list.count == 0;
}

// Short wins before long ones, then draws, then long losses before short ones.
static int rank_of_distance(int distance) {
    return distance > 0 ? 10000 - distance : distance < 0 ? -10000 - distance : 0;
}

// The distance by definition: the best of all legal moves.
static int judged_distance(Position& position, const tablegen::TableSet& tables, int limit) {
    MoveList list;
    generate_legal(position, list);
    if (list.count == 0)
        return in_check(position) ? -1 : 0;
    int best = 0;
    bool first = true;
    for (int i = 0; i < list.count; ++i) {
        const Move move = list.moves[i];
        make_move(position, move);
        const int after = solved_or_judged(position, tables, limit);
        const bool zeroing = position.halfmove == 0 || is_mate(position, after);
        const int distance =
            zeroing ? distance_by_zeroing(after, limit) : distance_by_quiet_move(after);
        unmake_move(position, move);
        if (first || rank_of_distance(distance) > rank_of_distance(best))
            best = distance;
        first = false;
    }
    return best;
}

// What the position's own table says. It knows no en passant: that is judged.
static int solved_or_judged(Position& position, const tablegen::TableSet& tables, int limit) {
    if (position.ep_square != NO_SQUARE)
        return judged_distance(position, tables, limit);
    tablegen::Signature signature;
    for (int square = 0; square < 64; ++square) {
        const int piece = position.board[square];
        if (piece != EMPTY_SQUARE)
            ++signature.count[static_cast<std::size_t>(piece_colour(piece))]
                             [static_cast<std::size_t>(piece_type(piece) + 1)];
    }
    bool exchanged = false;
    const tablegen::Table& table = *tables.at(name_of(canonical(signature, &exchanged)));
    tablegen::Placement placement{};
    std::array<Bitboard, 2> left = {position.occupied[WHITE], position.occupied[BLACK]};
    for (std::size_t slot = 0; slot < table.layout.men; ++slot) {
        const int colour = table.layout.side[slot] ^ (exchanged ? 1 : 0);
        Bitboard men = left[static_cast<std::size_t>(colour)] &
                       position.pieces[colour][table.layout.kind[slot] - 1];
        const int square = lowest_square(men);
        left[static_cast<std::size_t>(colour)] ^= square_bit(square);
        placement[slot] = static_cast<std::uint8_t>(exchanged ? flip_rank(square) : square);
    }
    const int side = position.side ^ (exchanged ? 1 : 0);
    return table.distance[static_cast<std::size_t>(side)][cell_of(table.layout, placement)];
}

static std::string fen_of(const tablegen::Layout& layout, const tablegen::Placement& placement,
                          tablegen::Side side) {
    std::string board(64, '1');
    for (std::size_t slot = 0; slot < layout.men; ++slot) {
        const char* const letters = layout.side[slot] == tablegen::WHITE ? " PNBRQK" : " pnbrqk";
        board[placement[slot]] = letters[layout.kind[slot]];
    }
    std::string fen;
    for (std::size_t rank = 8; rank-- > 0;)
        fen += board.substr(8 * rank, 8) + (rank > 0 ? "/" : "");
    return fen + (side == tablegen::WHITE ? " w - - 1 1" : " b - - 1 1");
}

TEST(TablegenLimit, EveryValueFollowsFromThoseOfItsSuccessors) {
    struct {
        const char* name;
        int limit;
        unsigned one_in;   // of the cells, drawn at random
        std::size_t saved; // at least so many spoilt wins and saved losses
    } const rows[] = {
        {"KRvK", 10, 1, 50000}, {"KQvK", 10, 1, 10000},  {"KPvK", 10, 1, 10000},
        {"KPvK", 4, 1, 10000},  {"KPvKP", 10, 60, 1000}, {"KRvKP", 10, 60, 1000},
    };
    std::map<int, tablegen::TableSet> by_limit;
    for (const auto& row : rows) {
        tablegen::TableSet& tables = by_limit[row.limit];
        const tablegen::Table& table =
            solve_closure(*tablegen::parse_signature(row.name), tables, 2, row.limit);
        std::mt19937 random(7);
        Position position = position_from(starting_fen);
        std::size_t saved = 0;
        std::size_t wrong = 0;
        std::string first_wrong;
        for (std::size_t cell = 0; cell < cells_of(table.layout); ++cell) {
            if (random() % row.one_in != 0)
                continue;
            const tablegen::Placement placement = placement_of(table.layout, cell);
            for (const tablegen::Side side : {tablegen::WHITE, tablegen::BLACK}) {
                const int solved = table.distance[side][cell];
                if (solved == tablegen::ILLEGAL_DISTANCE)
                    continue;
                saved += std::abs(solved) > row.limit ? 1 : 0;
                const std::string fen = fen_of(table.layout, placement, side);
                position_set_fen(position, fen.c_str());
                const int judged = judged_distance(position, tables, row.limit);
                if (judged != solved && wrong++ == 0)
                    first_wrong = fen + ": solved " + std::to_string(solved) + ", judged " +
                                  std::to_string(judged);
            }
        }
        EXPECT_EQ(wrong, 0U) << row.name << ": " << first_wrong;
        EXPECT_GT(saved, row.saved) << row.name;
    }
}

} // namespace brindlemoth
