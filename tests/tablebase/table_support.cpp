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

std::string published_tables() {
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

std::vector<std::string> signatures_of(std::size_t men) {
    std::vector<std::string> names = all_signatures();
    std::erase_if(names, [men](const std::string& name) { return name.size() != men + 1; });
    return names;
}

std::string read_file(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
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

std::vector<ProbeBoard> en_passant_boards(const ProbeBoard& board) {
    const bool white_moved = board.white_to_move == 0;
    const int forward = white_moved ? 8 : -8;
    const Bitboard capturers = board.pawns & (white_moved ? board.black : board.white);
    std::vector<ProbeBoard> boards;
    for (Bitboard men = board.pawns & (white_moved ? board.white : board.black) &
                        rank_mask(white_moved ? 3 : 4);
         men != 0;) {
        const int passed = pop_lowest(men) - forward;
        const Bitboard way = square_bit(passed) | square_bit(passed - forward);
        if (((board.white | board.black) & way) != 0 ||
            (pawn_attacks[white_moved ? WHITE : BLACK][passed] & capturers) == 0)
            continue;
        boards.push_back(board);
        boards.back().ep_square = static_cast<std::uint8_t>(passed);
    }
    return boards;
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
        const std::vector<ProbeBoard> with_ep = en_passant_boards(board);
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
