// The probe board against the engine's own board, and the material keys.

#include "board/attacks.h"
#include "board/bitboard.h"
#include "board/make_move.h"
#include "movegen/legality.h"
#include "support/support.h"
#include "tablebase/probe_board.h"
#include "tablebase/table_support.h"

#include <algorithm>
#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace brindlemoth {

namespace {

ProbeBoard board_from(const std::string& fen) {
    ProbeBoard board;
    board_from_position(position_from(fen), board);
    return board;
}

std::string probe_move_text(ProbeMove move) {
    const auto square = [](int s) {
        return std::string{static_cast<char>('a' + file_of(s)),
                           static_cast<char>('1' + rank_of(s))};
    };
    std::string text = square(probe_move_from(move)) + square(probe_move_to(move));
    if (probe_move_promotion(move) != PROMOTE_NONE)
        text += " qrbn"[probe_move_promotion(move)];
    return text;
}

std::vector<std::string> legal_move_texts(const ProbeBoard& board) {
    ProbeMove list[256];
    const ProbeMove* const end = board_legal_moves(board, list);
    std::vector<std::string> texts;
    for (const ProbeMove* move = list; move != end; ++move)
        texts.push_back(probe_move_text(*move));
    return texts;
}

std::string moves_in_order(const std::string& fen, bool captures) {
    ProbeMove list[256];
    const ProbeBoard board = board_from(fen);
    const ProbeMove* const end = captures ? board_captures(board, list) : board_moves(board, list);
    std::string text;
    for (const ProbeMove* move = list; move != end; ++move)
        text.append(text.empty() ? "" : " ").append(probe_move_text(*move));
    return text;
}

bool same_men(const ProbeBoard& a, const ProbeBoard& b) {
    return a.white == b.white && a.black == b.black && a.kings == b.kings && a.queens == b.queens &&
           a.rooks == b.rooks && a.bishops == b.bishops && a.knights == b.knights &&
           a.pawns == b.pawns && a.halfmove == b.halfmove && a.white_to_move == b.white_to_move;
}

// The en-passant square that a double step leaves when it counts only with a capturer at hand.
int useful_ep_square(const Position& position) {
    if (position.ep_square == NO_SQUARE)
        return 0;
    const Bitboard capturers = pawn_attacks[position.side ^ 1][position.ep_square];
    return (capturers & position.pieces[position.side][PAWN]) != 0 ? position.ep_square : 0;
}

} // namespace

// Positions of whole games have more men than a table, but the rules are the same ones.
TEST(ProbeBoard, PlaysLikeTheEngine) {
    for_random_positions(20000, 4, [](Position& position) {
        position.castling = 0;
        ProbeBoard board;
        board_from_position(position, board);
        if (popcount(position.all_pieces) > 24)
            return; // beyond the room of a list
        ASSERT_TRUE(board_is_sane(board)) << board_text(board);
        ASSERT_EQ(board_in_check(board), in_check(position)) << board_text(board);

        MoveList legal;
        generate_legal(position, legal);
        std::vector<std::string> expected;
        for (int i = 0; i < legal.count; ++i)
            expected.emplace_back(move_to_text(legal.moves[i]));
        std::vector<std::string> found = legal_move_texts(board);
        std::sort(expected.begin(), expected.end());
        std::sort(found.begin(), found.end());
        ASSERT_EQ(found, expected) << board_text(board);
        ASSERT_EQ(board_has_legal_move(board), legal.count > 0);
        ASSERT_EQ(board_is_mate(board), legal.count == 0 && in_check(position));

        std::map<std::string, ProbeMove> by_text;
        ProbeMove list[256];
        const ProbeMove* const end = board_moves(board, list);
        for (const ProbeMove* move = list; move != end; ++move)
            by_text[probe_move_text(*move)] = *move;
        for (int i = 0; i < legal.count; ++i) {
            ProbeBoard played;
            const ProbeMove move = by_text[move_to_text(legal.moves[i])];
            ASSERT_TRUE(board_play(played, board, move));
            ASSERT_EQ(board_moved_type(board, move),
                      piece_type(position.board[move_from(legal.moves[i])]) + 1);
            make_move(position, legal.moves[i]);
            ProbeBoard made;
            board_from_position(position, made);
            ASSERT_TRUE(same_men(played, made)) << board_text(board) << probe_move_text(move);
            ASSERT_EQ(played.ep_square, useful_ep_square(position)) << board_text(board);
            unmake_move(position, legal.moves[i]);
        }
    });
}

TEST(ProbeBoard, CapturesAreTheCapturingMoves) {
    for_random_positions(20000, 5, [](Position& position) {
        ProbeBoard board;
        board_from_position(position, board);
        if (popcount(position.all_pieces) > 20)
            return;
        ProbeMove all[256];
        ProbeMove captures[256];
        const ProbeMove* const all_end = board_moves(board, all);
        ProbeMove* const captures_end = board_captures(board, captures);
        const Bitboard enemy = board.white_to_move == 1 ? board.black : board.white;
        std::vector<ProbeMove> expected;
        for (const ProbeMove* move = all; move != all_end; ++move) {
            const bool en_passant = board.ep_square != 0 &&
                                    probe_move_to(*move) == board.ep_square &&
                                    board_moved_type(board, *move) == PROBE_PAWN;
            if (en_passant || (enemy & square_bit(probe_move_to(*move))) != 0)
                expected.push_back(*move);
        }
        ASSERT_EQ(std::vector<ProbeMove>(captures, captures_end), expected) << board_text(board);
    });
}

TEST(ProbeBoard, OrderOfMoves) {
    const struct {
        const char* fen;
        bool captures;
        const char* moves;
    } cases[] = {
        // A pawn's destinations go upward whatever they are; promotions queen, knight, rook,
        // bishop.
        {"3r4/4P3/8/8/8/8/8/k6K w - - 0 1", false,
         "h1g1 h1g2 h1h2 e7d8q e7d8n e7d8r e7d8b e7e8q e7e8n e7e8r e7e8b"},
        {"3r4/4P3/8/8/8/8/8/k6K w - - 0 1", true, "e7d8q e7d8n e7d8r e7d8b"},
        // En passant comes before a pawn's other moves.
        {"7k/8/8/8/3Pp3/3N4/8/K7 b - d3 0 1", false, "h8g7 h8h7 h8g8 e4d3 e4d3 e4e3"},
        // Each type from its lowest square.
        {"7k/8/8/8/8/n7/1R1R4/K2B4 b - - 0 1", false, "h8g7 h8h7 h8g8 a3b1 a3c2 a3c4 a3b5"},
        {"k7/8/8/8/1p1p4/2Q1N3/8/K7 w - - 0 1", true, "c3b4 c3d4"},
        {"k7/8/2n5/1p1p4/2B1N3/8/8/K7 b - - 0 1", true, "b5c4 d5c4 d5e4"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(moves_in_order(c.fen, c.captures), c.moves) << c.fen;
}

TEST(ProbeBoard, SanityOfPositions) {
    const struct {
        const char* fen;
        bool sane;
    } cases[] = {
        {"8/8/8/4k3/8/4K3/8/Q7 b - - 0 1", true},
        {"8/8/8/4k3/4K3/8/8/Q7 b - - 0 1", false}, // kings touch
        {"8/8/8/4k3/8/4K3/8/8 w - - 0 1", true},
        {"8/8/8/8/8/4K3/8/Q7 w - - 0 1", false},    // no black king
        {"8/8/8/4k3/8/4K3/8/Q6K w - - 0 1", false}, // two white kings
        {"P7/8/8/4k3/8/4K3/8/8 w - - 0 1", false},  // pawn on the last rank
        {"8/8/8/4k3/8/4K3/8/p7 w - - 0 1", false},  // pawn on the first
        {"8/8/8/R3k3/8/4K3/8/8 w - - 0 1", false},  // the side not to move is in check
        {"8/8/8/R3k3/8/4K3/8/8 b - - 0 1", true},
    };
    for (const auto& c : cases)
        EXPECT_EQ(board_is_sane(board_from(c.fen)), c.sane) << c.fen;

    // What no position can hold: two men on a square, a man of no colour, a square of two colours.
    const ProbeBoard good = board_from("8/8/8/4k3/8/4K3/8/Q7 b - - 0 1");
    ProbeBoard bad = good;
    bad.rooks |= bad.queens;
    EXPECT_FALSE(board_is_sane(bad));
    bad = good;
    bad.knights |= square_bit(H8);
    EXPECT_FALSE(board_is_sane(bad));
    bad = good;
    bad.black |= square_bit(A1);
    EXPECT_FALSE(board_is_sane(bad));
}

// Different men must never share a key: the tables know a board's men by nothing else.
TEST(MaterialKey, TellsAllMaterialApart) {
    std::set<Key> keys;
    int counts[16] = {};
    std::size_t materials = 0;
    const std::vector<int> kinds = {1, 2, 3, 4, 5, 9, 10, 11, 12, 13};
    const std::function<void(std::size_t, int)> choose = [&](std::size_t kind, int left) {
        if (kind == kinds.size()) {
            ++materials;
            keys.insert(material_key_of_counts(counts, false));
            return;
        }
        for (int n = 0; n <= left; ++n) {
            counts[kinds[kind]] = n;
            choose(kind + 1, left - n);
        }
        counts[kinds[kind]] = 0;
    };
    choose(0, 7);
    EXPECT_EQ(keys.size(), materials);
}

TEST(MaterialKey, OfBoards) {
    EXPECT_EQ(board_material_key(board_from("8/8/8/4k3/8/4K3/8/8 w - - 0 1"), false), 0U);
    EXPECT_EQ(board_material_key(board_from("8/8/8/4k3/8/4K3/8/8 w - - 0 1"), true), 0U);
    const ProbeBoard even = board_from("r7/8/8/4k3/8/4K3/8/6R1 w - - 0 1");
    EXPECT_EQ(board_material_key(even, false), board_material_key(even, true));
    EXPECT_EQ(board_material_key(board_from("8/8/8/4k3/8/4K3/8/QN6 w - - 0 1"), false),
              0xA3EC1ABC71E90863ULL + 0xD2FB81862830191FULL);

    // A board, and the same with the colours exchanged; its signature and the counts of that.
    for (const std::string& signature : four_men_signatures()) {
        ProbeBoard board = empty_board(true);
        int counts[16] = {};
        int square = A3;
        for (const Man man : signature_men(signature)) {
            put_man(board, man, square++);
            ++counts[man.type + (man.white == 1 ? 0 : 8)];
        }
        const ProbeBoard other = colours_exchanged(board);
        EXPECT_EQ(board_material_key(board, false), material_key_of_counts(counts, false));
        EXPECT_EQ(board_material_key(board, true), material_key_of_counts(counts, true));
        EXPECT_EQ(board_material_key(board, true), board_material_key(other, false));
        char name[16];
        board_material_name(board, name, false);
        EXPECT_EQ(name, signature);
        board_material_name(other, name, true);
        EXPECT_EQ(name, signature);
    }
}

TEST(ProbeBoard, NoEnPassantSquareIsNumberedZero) {
    EXPECT_EQ(board_from("8/8/8/4k3/8/4K3/8/8 w - - 0 1").ep_square, 0);
    EXPECT_EQ(board_from("4k3/8/8/8/3Pp3/8/8/4K3 b - d3 0 1").ep_square, D3);
}

} // namespace brindlemoth
