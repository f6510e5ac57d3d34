// Spoilt wins and saved losses: small endgames have none within fifty moves, so they are solved
// with a lower limit here, and every position is judged from its successors as the engine's move
// generator finds them.
#include "board/bitboard.h"
#include "board/make_move.h"
#include "movegen/legality.h"
#include "support/support.h"
#include "tablegen/solved_table.h"

#include <algorithm>
#include <array>
#include <gtest/gtest.h>
#include <map>
#include <random>

namespace brindlemoth {

static int solved_or_judged(Position& position, const SolvedSet& tables, int limit);

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
static int judged_distance(Position& position, const SolvedSet& tables, int limit) {
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
static int solved_or_judged(Position& position, const SolvedSet& tables, int limit) {
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
    const SolvedTable& table = tables.solved.at(name_of(canonical(signature, &exchanged)));
    const tablegen::Layout& layout = table.parts[0].table.layout;
    tablegen::Placement placement{};
    std::array<Bitboard, 2> left = {position.occupied[WHITE], position.occupied[BLACK]};
    for (std::size_t slot = 0; slot < layout.men; ++slot) {
        const int colour = layout.side[slot] ^ (exchanged ? 1 : 0);
        Bitboard men =
            left[static_cast<std::size_t>(colour)] & position.pieces[colour][layout.kind[slot] - 1];
        const int square = lowest_square(men);
        left[static_cast<std::size_t>(colour)] ^= square_bit(square);
        placement[slot] = static_cast<std::uint8_t>(exchanged ? flip_rank(square) : square);
    }
    const int side = position.side ^ (exchanged ? 1 : 0);
    return tablegen::distance_of(cell_at(table, placement, static_cast<tablegen::Side>(side)));
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

namespace {

struct LimitRow {
    const char* name;
    int limit;
    unsigned one_in;   // of the words, drawn at random
    std::size_t saved; // at least so many spoilt wins and saved losses
};

} // namespace

static void judge_row(const LimitRow& row, SolvedSet& tables) {
    const SolvedTable& table = solve_into(tables, row.name);
    const tablegen::Layout& layout = table.parts[0].table.layout;
    std::mt19937 random(7);
    Position position = position_from(starting_fen);
    std::size_t saved = 0;
    std::size_t wrong = 0;
    std::string first_wrong;
    for (std::size_t word = 0; word < words_of(layout); ++word) {
        if (random() % row.one_in != 0)
            continue;
        tablegen::Placement placement = tablegen::placement_of(layout, word);
        for (int king = 0; king < 128; ++king) {
            placement[layout.men - 1] = static_cast<std::uint8_t>(king % 64);
            const tablegen::Side side = king < 64 ? tablegen::WHITE : tablegen::BLACK;
            const tablegen::Cell cell = cell_at(table, placement, side);
            if (!tablegen::is_legal(cell))
                continue;
            const int solved = tablegen::distance_of(cell);
            saved += std::abs(solved) > row.limit ? 1 : 0;
            const std::string fen = fen_of(layout, placement, side);
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

TEST(TablegenLimit, EveryValueFollowsFromThoseOfItsSuccessors) {
    // One program takes a sample, another all or many positions.
    const LimitRow rows[] = {
        {"KRvK", 10, ALL_POSITIONS ? 1 : 8, ALL_POSITIONS ? 10000 : 1000},
        {"KQvK", 10, ALL_POSITIONS ? 1 : 8, ALL_POSITIONS ? 2000 : 200},
        {"KPvK", 10, ALL_POSITIONS ? 1 : 16, ALL_POSITIONS ? 5000 : 300},
        {"KPvK", 4, ALL_POSITIONS ? 1 : 16, ALL_POSITIONS ? 5000 : 300},
        {"KPvKP", 10, ALL_POSITIONS ? 60 : 1000, ALL_POSITIONS ? 1000 : 60},
        {"KRvKP", 10, ALL_POSITIONS ? 60 : 1000, ALL_POSITIONS ? 1000 : 60},
    };
    std::map<int, SolvedSet> by_limit;
    for (const LimitRow& row : rows) {
        by_limit[row.limit].limit = row.limit;
        judge_row(row, by_limit[row.limit]);
    }
}

} // namespace brindlemoth
