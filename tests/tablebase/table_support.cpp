#include "tablebase/table_support.h"

#include "board/attacks.h"
#include "board/bitboard.h"
#include "movegen/legality.h"
#include "support/support.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace brindlemoth {

std::string syzygy_directory() {
    const std::string path = shared_directory() + "/syzygy";
    return std::filesystem::is_directory(path) ? path : std::string();
}

// The sides of so many men besides the king, from strong to weak.
static std::vector<std::string> sides(std::size_t men) {
    if (men == 0)
        return {""};
    const std::string letters = "QRBNP";
    std::vector<std::string> list;
    for (const char letter : letters) {
        for (const std::string& rest : sides(men - 1)) {
            if (rest.empty() || letters.find(letter) <= letters.find(rest[0]))
                list.push_back(letter + rest);
        }
    }
    return list;
}

// Of sides of equal length the stronger stands first.
std::vector<std::string> all_signatures() {
    std::vector<std::string> names;
    constexpr std::size_t shapes[][2] = {{1, 0}, {1, 1}, {2, 0}, {2, 1}, {3, 0}, {2, 2},
                                         {3, 1}, {4, 0}, {5, 0}, {4, 1}, {3, 2}};
    for (const auto& [first, second] : shapes) {
        const std::vector<std::string> one = sides(first);
        const std::vector<std::string> two = sides(second);
        for (std::size_t i = 0; i < one.size(); ++i) {
            for (std::size_t j = first == second ? i : 0; j < two.size(); ++j)
                names.push_back("K" + one[i] + "vK" + two[j]);
        }
    }
    return names;
}

std::vector<std::string> three_men_signatures() {
    const std::vector<std::string> all = all_signatures();
    return {all.begin(), all.begin() + 5};
}

std::vector<std::string> four_men_signatures() {
    const std::vector<std::string> all = all_signatures();
    return {all.begin() + 5, all.begin() + 35};
}

std::string read_file(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

void write_file(const std::string& path, const std::string& content) {
    std::ofstream file(path, std::ios::binary);
    file.write(content.data(), static_cast<std::streamsize>(content.size()));
}

std::vector<Man> signature_men(const std::string& signature) {
    std::vector<Man> men;
    int white = 1;
    for (const char letter : signature) {
        if (letter == 'v')
            white = 0;
        else
            men.push_back({white, static_cast<int>(std::string(" PNBRQK").find(letter))});
    }
    return men;
}

ProbeBoard empty_board(bool white_to_move) {
    ProbeBoard board{};
    board.white_to_move = white_to_move ? 1 : 0;
    return board;
}

void put_man(ProbeBoard& board, Man man, int square) {
    constexpr Bitboard ProbeBoard::*men[] = {nullptr,
                                             &ProbeBoard::pawns,
                                             &ProbeBoard::knights,
                                             &ProbeBoard::bishops,
                                             &ProbeBoard::rooks,
                                             &ProbeBoard::queens,
                                             &ProbeBoard::kings};
    (man.white == 1 ? board.white : board.black) |= square_bit(square);
    board.*men[man.type] |= square_bit(square);
}

template <typename Visit> static void for_all_men(const ProbeBoard& board, Visit visit) {
    for (const int white : {1, 0}) {
        for (int type = PROBE_KING; type >= PROBE_PAWN; --type) {
            for (Bitboard men = board_men(board, white, type); men != 0;)
                visit(Man{white, type}, pop_lowest(men));
        }
    }
}

std::uint64_t packed(const ProbeBoard& board) {
    std::uint64_t number = board.white_to_move;
    for_all_men(board, [&number](Man, int square) {
        number = number * 64 + static_cast<std::uint64_t>(square);
    });
    return number;
}

ProbeBoard image(const ProbeBoard& board, unsigned how) {
    if (board.pawns != 0)
        how &= 9;
    const auto reflect = [how](int square) {
        square ^= ((how & 1) != 0 ? 7 : 0) ^ ((how & 2) != 0 ? 56 : 0);
        if ((how & 4) != 0)
            square = make_square(rank_of(square), file_of(square));
        return (how & 8) != 0 ? flip_rank(square) : square;
    };
    const int exchanged = (how & 8) != 0 ? 1 : 0;
    ProbeBoard result = empty_board(board.white_to_move != exchanged);
    for_all_men(board, [&](Man man, int square) {
        put_man(result, {man.white ^ exchanged, man.type}, reflect(square));
    });
    result.halfmove = board.halfmove;
    if (board.ep_square != 0)
        result.ep_square = static_cast<std::uint8_t>(reflect(board.ep_square));
    return result;
}

ProbeBoard colours_exchanged(const ProbeBoard& board) {
    return image(board, 8);
}

bool stands_for_its_images(const ProbeBoard& board) {
    const int king = lowest_square(board_men(board, 1, PROBE_KING));
    return file_of(king) < 4 && (board.pawns != 0 || rank_of(king) <= file_of(king));
}

// The board with each en-passant square that the last move can have left.
static void visit_en_passant(const ProbeBoard& board,
                             const std::function<void(const ProbeBoard&)>& visit) {
    const bool white_moved = board.white_to_move == 0;
    const int forward = white_moved ? 8 : -8;
    const Bitboard pawns =
        board.pawns & (white_moved ? board.white : board.black) & rank_mask(white_moved ? 3 : 4);
    const Bitboard capturers = board.pawns & (white_moved ? board.black : board.white);
    for (Bitboard men = pawns; men != 0;) {
        const int pawn = pop_lowest(men);
        const int passed = pawn - forward;
        const Bitboard way = square_bit(passed) | square_bit(passed - forward);
        if (((board.white | board.black) & way) != 0 ||
            (pawn_attacks[white_moved ? WHITE : BLACK][passed] & capturers) == 0)
            continue;
        ProbeBoard with_ep = board;
        with_ep.ep_square = static_cast<std::uint8_t>(passed);
        visit(with_ep);
    }
}

static void place_men(const std::vector<Man>& men, std::size_t next, int last_square,
                      const ProbeBoard& board,
                      const std::function<void(const ProbeBoard&)>& visit) {
    if (next == men.size()) {
        for (const bool white_to_move : {true, false}) {
            ProbeBoard ready = board;
            ready.white_to_move = white_to_move ? 1 : 0;
            if (!board_is_sane(ready))
                continue;
            visit(ready);
            visit_en_passant(ready, visit);
        }
        return;
    }
    const Man man = men[next];
    const bool twin =
        next > 0 && men[next - 1].white == man.white && men[next - 1].type == man.type;
    for (int square = twin ? last_square + 1 : 0; square < SQUARE_COUNT; ++square) {
        if (((board.white | board.black) & square_bit(square)) != 0 ||
            (man.type == PROBE_PAWN && (rank_of(square) == 0 || rank_of(square) == 7)))
            continue;
        ProbeBoard more = board;
        put_man(more, man, square);
        place_men(men, next + 1, square, more, visit);
    }
}

void for_all_boards(const std::string& signature,
                    const std::function<void(const ProbeBoard&)>& visit) {
    place_men(signature_men(signature), 0, -1, empty_board(true), visit);
}

ProbeBoard random_board(const std::string& signature, std::mt19937& random) {
    while (true) {
        ProbeBoard board = empty_board((random() & 1) != 0);
        for (const Man man : signature_men(signature)) {
            int square;
            do
                square = static_cast<int>(random() % 64);
            while (((board.white | board.black) & square_bit(square)) != 0);
            put_man(board, man, square);
        }
        if ((random() & 1) != 0)
            board = colours_exchanged(board);
        if (!board_is_sane(board))
            continue;
        std::vector<ProbeBoard> with_ep;
        visit_en_passant(board, [&with_ep](const ProbeBoard& ep) { with_ep.push_back(ep); });
        return with_ep.empty() ? board : with_ep[random() % with_ep.size()];
    }
}

std::string board_text(const ProbeBoard& board) {
    std::string fen = "11111111/11111111/11111111/11111111/11111111/11111111/11111111/11111111";
    for_all_men(board, [&fen](Man man, int square) {
        fen[static_cast<std::size_t>((7 - rank_of(square)) * 9 + file_of(square))] =
            (man.white == 1 ? " PNBRQK" : " pnbrqk")[man.type];
    });
    const int ep = board.ep_square;
    fen += board.white_to_move == 1 ? " w - " : " b - ";
    if (ep == 0)
        return fen + "- " + std::to_string(board.halfmove) + " 1";
    fen += static_cast<char>('a' + file_of(ep));
    fen += static_cast<char>('1' + rank_of(ep));
    return fen + " " + std::to_string(board.halfmove) + " 1";
}

Position position_of(const ProbeBoard& board) {
    return position_from(board_text(board));
}

ProbeBoard board_of(const Position& position) {
    ProbeBoard board;
    board_from_position(position, board);
    return board;
}

ProbeBoard board_from(const std::string& fen) {
    return board_of(position_from(fen));
}

std::vector<Move> moves_in_root_order(const Position& position) {
    Position copy = position;
    MoveList legal;
    generate_legal(copy, legal);
    std::vector<Move> moves(legal.moves, legal.moves + legal.count);
    const auto place = [&position](Move move) {
        constexpr int promotions[] = {1, 3, 2, 0}; // knight, bishop, rook, queen
        const int type = piece_type(position.board[move_from(move)]);
        const bool en_passant = move_flag(move) == FLAG_EN_PASSANT;
        const int promotion = is_promotion(move) ? promotions[promoted_type(move) - KNIGHT] : 0;
        return ((KING - type) * 64 + move_from(move)) * 512 +
               (en_passant ? 0 : move_to(move) * 4 + promotion + 1);
    };
    std::sort(moves.begin(), moves.end(), [&place](Move a, Move b) { return place(a) < place(b); });
    return moves;
}

} // namespace brindlemoth
