#include "shell/diagnostics.h"

#include "board/fen.h"
#include "board/make_move.h"
#include "movegen/generate.h"
#include "movegen/legality.h"
#include "movegen/perft.h"
#include "platform/clock.h"
#include "platform/standard_output.h"
#include "search/root.h"

#include <algorithm>
#include <iterator>

namespace brindlemoth {

namespace {

constexpr int DEFAULT_BENCH_DEPTH = 10;

// A position with its known number of leaves.
struct PerftCase {
    const char* fen;
    int depth;
    std::uint64_t expected;
    const char* label;
};

// The cases of perft_suite(). bench searches the first positions.
constexpr PerftCase perft_cases[] = {
    {starting_fen, 5, 4865609, "startpos depth 5"},
    {"r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq - 0 1", 5, 193690690,
     "kiwipete depth 5"},
    {"8/2p5/3p4/KP5r/1R3p1k/8/4P1P1/8 w - - 0 1", 6, 11030083, "pos3 depth 6"},
    {"r3k2r/Pppp1ppp/1b3nbN/nP6/BBP1P3/q4N2/Pp1P2PP/R2Q1RK1 w kq - 0 1", 5, 15833292,
     "pos4 depth 5"},
    {"rnbq1k1r/pp1Pbppp/2p5/8/2B5/8/PPP1NnPP/RNBQK2R w KQ - 1 8", 5, 89941194, "pos5 depth 5"},
    {"r4rk1/1pp1qppp/p1np1n2/2b1p1B1/2B1P1b1/p1NP1N2/1PP1QPPP/R4RK1 w - - 0 10", 5, 180719404,
     "pos6 depth 5"},
};

constexpr int PERFT_CASE_COUNT = std::size(perft_cases);
constexpr int BENCH_POSITION_COUNT = 5;

// Searches the position from cleared search memory and returns the number of nodes.
std::uint64_t bench_position(const char* fen, int depth) {
    Position position;
    position_set_fen(position, fen);
    clear_search_memory();
    SearchLimits limits{};
    limits.depth = depth;
    search_root(position, limits);
    return node_count;
}

char letter_at(const Position& position, int square) {
    const int piece = position.board[square];
    return piece == EMPTY_SQUARE ? '.' : PIECE_LETTERS[piece];
}

} // namespace

void print_board(const Position& position) {
    constexpr const char* RULE = "\n  +---+---+---+---+---+---+---+---+\n";
    print("%s", RULE);
    for (int rank = 7; rank >= 0; --rank) {
        char row[] = " . | . | . | . | . | . | . | . |";
        for (int file = 0; file < 8; ++file)
            row[4 * file + 1] = letter_at(position, make_square(file, rank));
        print("%d |%s%s", rank + 1, row, RULE);
    }
    print("    a   b   c   d   e   f   g   h\n");
    print("\nSide: %s\n", position.side == WHITE ? "white" : "black");
    print("Castling: %s%s%s%s\n", position.castling & WHITE_SHORT ? "K" : "",
          position.castling & WHITE_LONG ? "Q" : "", position.castling & BLACK_SHORT ? "k" : "",
          position.castling & BLACK_LONG ? "q" : "");
    if (position.ep_square != NO_SQUARE)
        print("EP square: %c%d\n", 'a' + file_of(position.ep_square),
              rank_of(position.ep_square) + 1);
    print("50-move: %d, Hash: %016llx\n", position.halfmove,
          static_cast<unsigned long long>(position.key));
}

void perft_divide(Position& position, int depth) {
    depth = std::min(depth, MAX_UNDO - position.undo_count);
    MoveList legal;
    generate_legal(position, legal);
    std::uint64_t total = 0;
    for (int i = 0; i < legal.count; ++i) {
        make_move(position, legal.moves[i]);
        const std::uint64_t count = perft(position, depth - 1);
        unmake_move(position, legal.moves[i]);
        print("%s: %llu\n", move_to_text(legal.moves[i]), static_cast<unsigned long long>(count));
        total += count;
    }
    print("Total: %llu\n", static_cast<unsigned long long>(total));
}

void perft_suite() {
    print("Running perft test suite (%d positions)...\n\n", PERFT_CASE_COUNT);
    int passed = 0;
    for (const PerftCase& test : perft_cases) {
        Position position;
        position_set_fen(position, test.fen);
        const std::uint64_t count = perft(position, test.depth);
        const bool pass = count == test.expected;
        passed += pass ? 1 : 0;
        print("[%s] %s  got %llu  expected %llu\n", pass ? "PASS" : "FAIL", test.label,
              static_cast<unsigned long long>(count),
              static_cast<unsigned long long>(test.expected));
    }
    print("\n%d/%d passed\n", passed, PERFT_CASE_COUNT);
}

void cmd_bench(int depth) {
    if (depth < 1)
        depth = DEFAULT_BENCH_DEPTH;
    const std::int64_t start = tick_count();
    std::uint64_t nodes = 0;
    for (int i = 0; i < BENCH_POSITION_COUNT; ++i)
        nodes += bench_position(perft_cases[i].fen, depth);
    const std::int64_t elapsed = tick_count() - start;
    print("\n=== Bench ===\n");
    print("Depth   : %d\n", depth);
    print("Nodes   : %llu\n", static_cast<unsigned long long>(nodes));
    print("Time    : %lld ms\n", static_cast<long long>(elapsed));
    print("NPS     : %llu\n", nodes_per_second(nodes, elapsed));
}

void cmd_dupcheck(const Position& position) {
    Move moves[MAX_MOVES];
    const int count = static_cast<int>(generate_pseudo_legal(position, moves) - moves);
    int duplicates = 0;
    for (int i = 0; i < count; ++i) {
        for (int j = i + 1; j < count; ++j) {
            if (moves[i] == moves[j]) {
                print("DUPLICATE: %s (indices %d and %d)\n", move_to_text(moves[i]), i, j);
                ++duplicates;
            }
        }
    }
    print("Total pseudo-legal: %d, Duplicates: %d\n", count, duplicates);
}

void cmd_illegalcheck(const Position& position) {
    Move moves[MAX_MOVES];
    const Move* const end = generate_pseudo_legal(position, moves);
    int illegal = 0;
    for (const Move* move = moves; move != end; ++move) {
        if (!move_is_legal(position, *move))
            continue;
        Position copy = position;
        make_move(copy, *move);
        const int us = position.side;
        const int square = lowest_square(copy.pieces[us][KING]);
        const Bitboard* const them = copy.pieces[copy.side];
        const bool pawn = (pawn_attacks[us][square] & them[PAWN]) != 0;
        const bool knight = (knight_attacks[square] & them[KNIGHT]) != 0;
        const bool king = (king_attacks[square] & them[KING]) != 0;
        const bool diag =
            (bishop_attacks(square, copy.all_pieces) & (them[BISHOP] | them[QUEEN])) != 0;
        const bool orth = (rook_attacks(square, copy.all_pieces) & (them[ROOK] | them[QUEEN])) != 0;
        if (pawn || knight || king || diag || orth) {
            print("ILLEGAL (king in check): %s  pawn=%d knight=%d king=%d diag=%d orth=%d\n",
                  move_to_text(*move), pawn, knight, king, diag, orth);
            ++illegal;
        }
    }
    if (illegal == 0)
        print("No illegal moves found among move_is_legal=true set.\n");
}

} // namespace brindlemoth
