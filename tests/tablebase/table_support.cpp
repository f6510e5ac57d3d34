#include "tablebase/table_support.h"

#include "board/attacks.h"
#include "board/bitboard.h"
#include "support/support.h"

#include <filesystem>
#include <fstream>
#include <iterator>

namespace brindlemoth {

std::string syzygy_directory() {
    const std::string path = shared_directory() + "/syzygy";
    return std::filesystem::is_directory(path) ? path : std::string();
}

const std::vector<std::string>& three_men_signatures() {
    static const std::vector<std::string> names = {"KQvK", "KRvK", "KBvK", "KNvK", "KPvK"};
    return names;
}

const std::vector<std::string>& four_men_signatures() {
    static const std::vector<std::string> names = {
        "KQvKQ", "KQvKR", "KQvKB", "KQvKN", "KQvKP", "KRvKR", "KRvKB", "KRvKN", "KRvKP", "KBvKB",
        "KBvKN", "KBvKP", "KNvKN", "KNvKP", "KPvKP", "KQQvK", "KQRvK", "KQBvK", "KQNvK", "KQPvK",
        "KRRvK", "KRBvK", "KRNvK", "KRPvK", "KBBvK", "KBNvK", "KBPvK", "KNNvK", "KNPvK", "KPPvK",
    };
    return names;
}

std::string read_file(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

void write_file(const std::string& path, const std::string& content) {
    std::ofstream file(path, std::ios::binary);
    file.write(content.data(), static_cast<std::streamsize>(content.size()));
}

void write_blank_file(const std::string& path, std::size_t size) {
    write_file(path, std::string(size, '\0'));
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

static Bitboard& men_of_type(ProbeBoard& board, int type) {
    switch (type) {
    case PROBE_PAWN:
        return board.pawns;
    case PROBE_KNIGHT:
        return board.knights;
    case PROBE_BISHOP:
        return board.bishops;
    case PROBE_ROOK:
        return board.rooks;
    case PROBE_QUEEN:
        return board.queens;
    default:
        return board.kings;
    }
}

void put_man(ProbeBoard& board, Man man, int square) {
    (man.white == 1 ? board.white : board.black) |= square_bit(square);
    men_of_type(board, man.type) |= square_bit(square);
}

ProbeBoard colours_exchanged(const ProbeBoard& board) {
    ProbeBoard other = empty_board(board.white_to_move == 0);
    for (const int white : {0, 1}) {
        for (int type = PROBE_PAWN; type <= PROBE_KING; ++type) {
            for (Bitboard men = board_men(board, white, type); men != 0;)
                put_man(other, {1 - white, type}, flip_rank(pop_lowest(men)));
        }
    }
    other.halfmove = board.halfmove;
    if (board.ep_square != 0)
        other.ep_square = static_cast<std::uint8_t>(flip_rank(board.ep_square));
    return other;
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
            if (ready.pawns != 0)
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

std::string board_fen(const ProbeBoard& board) {
    std::string fen;
    for (int rank = 7; rank >= 0; --rank) {
        for (int file = 0; file < 8; ++file) {
            char letter = '1';
            for (int type = PROBE_PAWN; type <= PROBE_KING; ++type) {
                const Bitboard square = square_bit(make_square(file, rank));
                if ((board_men(board, 1, type) & square) != 0)
                    letter = " PNBRQK"[type];
                if ((board_men(board, 0, type) & square) != 0)
                    letter = " pnbrqk"[type];
            }
            fen += letter;
        }
        if (rank > 0)
            fen += '/';
    }
    fen += board.white_to_move == 1 ? " w - " : " b - ";
    if (board.ep_square == 0) {
        fen += '-';
    } else {
        fen += static_cast<char>('a' + file_of(board.ep_square));
        fen += static_cast<char>('1' + rank_of(board.ep_square));
    }
    return fen + " " + std::to_string(board.halfmove) + " 1";
}

Position position_of(const ProbeBoard& board) {
    return position_from(board_fen(board));
}

std::string board_text(const ProbeBoard& board) {
    std::string text;
    for (const int white : {1, 0}) {
        for (int type = PROBE_KING; type >= PROBE_PAWN; --type) {
            for (Bitboard men = board_men(board, white, type); men != 0;) {
                const int square = pop_lowest(men);
                text += white == 1 ? " PNBRQK"[type] : " pnbrqk"[type];
                text += static_cast<char>('a' + file_of(square));
                text += static_cast<char>('1' + rank_of(square));
                text += ' ';
            }
        }
    }
    text += board.white_to_move == 1 ? "white to move" : "black to move";
    if (board.ep_square != 0)
        text += " ep " + std::to_string(board.ep_square);
    return text;
}

} // namespace brindlemoth
