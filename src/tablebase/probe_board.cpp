#include "tablebase/probe_board.h"

#include "board/attacks.h"
#include "board/bitboard.h"

namespace brindlemoth {

namespace {

// The weights of the material key, by colour and by type from pawn to queen.
constexpr Key MATERIAL_MULTIPLIERS[2][5] = {
    {0xEC0ADE190C0F6003ULL, 0xD2FB81862830191FULL, 0xAADC1A2BE446234DULL, 0x985DEB9FC49333F9ULL,
     0xA3EC1ABC71E90863ULL},
    {0xA24F0F571BB202E7ULL, 0xBAEB854CD3259441ULL, 0xD5A4C95928F2FBE3ULL, 0xFD7866B439B94495ULL,
     0xD6E4E47D24962951ULL},
};

constexpr Bitboard LAST_RANKS = RANK_1 | RANK_8;

Bitboard own_men(const ProbeBoard& board) {
    return board.white_to_move ? board.white : board.black;
}
Bitboard enemy_men(const ProbeBoard& board) {
    return board.white_to_move ? board.black : board.white;
}
int mover(const ProbeBoard& board) {
    return board.white_to_move ? WHITE : BLACK;
}

// The attacks of a king, queen, rook, bishop or knight.
Bitboard man_attacks(int type, int square, Bitboard occupancy) {
    switch (type) {
    case PROBE_KING:
        return king_attacks[square];
    case PROBE_QUEEN:
        return queen_attacks(square, occupancy);
    case PROBE_ROOK:
        return rook_attacks(square, occupancy);
    case PROBE_BISHOP:
        return bishop_attacks(square, occupancy);
    default:
        return knight_attacks[square];
    }
}

ProbeMove* add_moves(ProbeMove* list, int from, Bitboard targets) {
    while (targets != 0)
        *list++ = make_probe_move(from, pop_lowest(targets), PROMOTE_NONE);
    return list;
}

ProbeMove* add_pawn_moves(ProbeMove* list, int from, Bitboard targets) {
    while (targets != 0) {
        const int to = pop_lowest(targets);
        if ((square_bit(to) & LAST_RANKS) != 0) {
            *list++ = make_probe_move(from, to, PROMOTE_QUEEN);
            *list++ = make_probe_move(from, to, PROMOTE_KNIGHT);
            *list++ = make_probe_move(from, to, PROMOTE_ROOK);
            *list++ = make_probe_move(from, to, PROMOTE_BISHOP);
        } else {
            *list++ = make_probe_move(from, to, PROMOTE_NONE);
        }
    }
    return list;
}

// Adds the moves of all men but the pawns to the squares of `allowed`.
ProbeMove* add_piece_moves(const ProbeBoard& board, ProbeMove* list, Bitboard allowed) {
    const Bitboard occupancy = board.white | board.black;
    const Bitboard own = own_men(board);
    const Bitboard sets[] = {board.kings, board.queens, board.rooks, board.bishops, board.knights};
    int type = PROBE_KING;
    for (const Bitboard set : sets) {
        for (Bitboard men = set & own; men != 0;) {
            const int from = pop_lowest(men);
            list = add_moves(list, from, man_attacks(type, from, occupancy) & allowed);
        }
        --type;
    }
    return list;
}

bool captures_en_passant(const ProbeBoard& board, Bitboard attacks) {
    return board.ep_square != 0 && (attacks & square_bit(board.ep_square)) != 0;
}

// The squares that a pawn can be pushed to.
Bitboard pawn_pushes(int from, bool white, Bitboard occupancy) {
    const Bitboard pawn = square_bit(from);
    const Bitboard empty = ~occupancy;
    const int colour = white ? WHITE : BLACK;
    const Bitboard once = forward_squares(pawn, colour) & empty;
    return once | (forward_squares(once & (white ? RANK_3 : RANK_6), colour) & empty);
}

// Whether a man other than the king of the colour opposite to `white` attacks the square.
bool attacked_by_enemy(const ProbeBoard& board, int square, bool white) {
    const Bitboard occupancy = board.white | board.black;
    const Bitboard enemy = white ? board.black : board.white;
    return (rook_attacks(square, occupancy) & (board.rooks | board.queens) & enemy) != 0 ||
           (bishop_attacks(square, occupancy) & (board.bishops | board.queens) & enemy) != 0 ||
           (knight_attacks[square] & board.knights & enemy) != 0 ||
           (pawn_attacks[white ? WHITE : BLACK][square] & board.pawns & enemy) != 0;
}

// One of the eight sets of a board after a move from `from` to `to`, apart from special moves.
Bitboard moved(Bitboard set, int from, int to) {
    const Bitboard arrived = ((set >> from) & 1) << to;
    return (set & ~(square_bit(from) | square_bit(to))) | arrived;
}

// The en-passant square after a pawn move: the square that a double step passes if an enemy pawn
// can capture there, otherwise 0.
std::uint8_t passed_square(const ProbeBoard& board, int from, int to, bool white) {
    const int start_rank = white ? 1 : 6;
    const int stop_rank = white ? 3 : 4;
    if (rank_of(from) != start_rank || rank_of(to) != stop_rank)
        return 0;
    const int passed = (from + to) / 2;
    const Bitboard enemy = white ? board.black : board.white;
    const Bitboard capturers = pawn_attacks[white ? WHITE : BLACK][passed] & board.pawns & enemy;
    return capturers != 0 ? static_cast<std::uint8_t>(passed) : std::uint8_t{0};
}

// True when the side not to move has a king and that king is not attacked.
bool board_legal_position(const ProbeBoard& board) {
    const bool white = board.white_to_move == 0; // the side not to move
    const Bitboard king = board.kings & (white ? board.white : board.black);
    if (king == 0)
        return false;
    const int square = lowest_square(king);
    const Bitboard enemy_king = board.kings & (white ? board.black : board.white);
    return (king_attacks[square] & enemy_king) == 0 && !attacked_by_enemy(board, square, white);
}

} // namespace

void board_from_position(const Position& position, ProbeBoard& board) {
    const Bitboard* const white = position.pieces[WHITE];
    const Bitboard* const black = position.pieces[BLACK];
    board.white = position.occupied[WHITE];
    board.black = position.occupied[BLACK];
    board.kings = white[KING] | black[KING];
    board.queens = white[QUEEN] | black[QUEEN];
    board.rooks = white[ROOK] | black[ROOK];
    board.bishops = white[BISHOP] | black[BISHOP];
    board.knights = white[KNIGHT] | black[KNIGHT];
    board.pawns = white[PAWN] | black[PAWN];
    board.halfmove = static_cast<std::uint8_t>(position.halfmove);
    board.ep_square = position.ep_square == NO_SQUARE
                          ? std::uint8_t{0}
                          : static_cast<std::uint8_t>(position.ep_square);
    board.white_to_move = position.side == WHITE ? 1 : 0;
}

Bitboard board_men(const ProbeBoard& board, int white, int type) {
    constexpr Bitboard ProbeBoard::*sets[] = {
        &ProbeBoard::pawns, &ProbeBoard::knights, &ProbeBoard::bishops,
        &ProbeBoard::rooks, &ProbeBoard::queens,  &ProbeBoard::kings,
    };
    if (type < PROBE_PAWN || type > PROBE_KING)
        return 0;
    return board.*sets[type - PROBE_PAWN] & (white == 1 ? board.white : board.black);
}

Key material_key_of_counts(const int counts[PIECE_CODES], bool mirror) {
    Key key = 0;
    for (int type = PROBE_PAWN; type <= PROBE_QUEEN; ++type) {
        key += static_cast<Key>(counts[type]) * MATERIAL_MULTIPLIERS[mirror][type - 1];
        key +=
            static_cast<Key>(counts[type + SECOND_SIDE]) * MATERIAL_MULTIPLIERS[!mirror][type - 1];
    }
    return key;
}

Key board_material_key(const ProbeBoard& board, bool mirror) {
    const Bitboard sets[5] = {board.pawns, board.knights, board.bishops, board.rooks, board.queens};
    const Bitboard first = mirror ? board.black : board.white;
    const Bitboard second = mirror ? board.white : board.black;
    Key key = 0;
    for (int i = 0; i < 5; ++i) {
        key += static_cast<Key>(popcount(sets[i] & first)) * MATERIAL_MULTIPLIERS[WHITE][i];
        key += static_cast<Key>(popcount(sets[i] & second)) * MATERIAL_MULTIPLIERS[BLACK][i];
    }
    return key;
}

void board_material_name(const ProbeBoard& board, char* text, bool mirror) {
    for (int side = 0; side < 2; ++side) {
        const int white = (side == 0) != mirror ? 1 : 0;
        for (int type = PROBE_KING; type >= PROBE_PAWN; --type)
            for (int n = popcount(board_men(board, white, type)); n > 0; --n)
                *text++ = TYPE_LETTERS[type];
        *text++ = side == 0 ? 'v' : '\0';
    }
}

int board_moved_type(const ProbeBoard& board, ProbeMove move) {
    const Bitboard from = square_bit(probe_move_from(move));
    for (int type = PROBE_PAWN; type <= PROBE_KING; ++type)
        if ((board_men(board, board.white_to_move, type) & from) != 0)
            return type;
    return PROBE_NONE;
}

ProbeMove* board_captures(const ProbeBoard& board, ProbeMove* list) {
    const Bitboard enemy = enemy_men(board);
    list = add_piece_moves(board, list, enemy);
    for (Bitboard men = board.pawns & own_men(board); men != 0;) {
        const int from = pop_lowest(men);
        const Bitboard attacks = pawn_attacks[mover(board)][from];
        if (captures_en_passant(board, attacks))
            *list++ = make_probe_move(from, board.ep_square, PROMOTE_NONE);
        list = add_pawn_moves(list, from, attacks & enemy);
    }
    return list;
}

ProbeMove* board_moves(const ProbeBoard& board, ProbeMove* list) {
    const Bitboard enemy = enemy_men(board);
    const Bitboard occupancy = board.white | board.black;
    list = add_piece_moves(board, list, ~own_men(board));
    for (Bitboard men = board.pawns & own_men(board); men != 0;) {
        const int from = pop_lowest(men);
        const Bitboard attacks = pawn_attacks[mover(board)][from];
        if (captures_en_passant(board, attacks))
            *list++ = make_probe_move(from, board.ep_square, PROMOTE_NONE);
        const Bitboard pushes = pawn_pushes(from, board.white_to_move != 0, occupancy);
        list = add_pawn_moves(list, from, (attacks & enemy) | pushes);
    }
    return list;
}

ProbeMove* board_legal_moves(const ProbeBoard& board, ProbeMove* list) {
    ProbeMove pseudo_legal[MAX_PROBE_MOVES];
    const ProbeMove* const end = board_moves(board, pseudo_legal);
    for (const ProbeMove* move = pseudo_legal; move != end; ++move) {
        ProbeBoard next;
        if (board_play(next, board, *move))
            *list++ = *move;
    }
    return list;
}

bool board_play(ProbeBoard& next, const ProbeBoard& board, ProbeMove move) {
    const int from = probe_move_from(move);
    const int to = probe_move_to(move);
    const int promotion = probe_move_promotion(move);
    const bool white = board.white_to_move != 0;

    next.white_to_move = white ? 0 : 1;
    next.white = moved(board.white, from, to);
    next.black = moved(board.black, from, to);
    next.kings = moved(board.kings, from, to);
    next.queens = moved(board.queens, from, to);
    next.rooks = moved(board.rooks, from, to);
    next.bishops = moved(board.bishops, from, to);
    next.knights = moved(board.knights, from, to);
    next.pawns = moved(board.pawns, from, to);
    next.ep_square = 0;

    const Bitboard target = square_bit(to);
    if (promotion != PROMOTE_NONE) {
        next.pawns &= ~target;
        switch (promotion) {
        case PROMOTE_QUEEN:
            next.queens |= target;
            break;
        case PROMOTE_ROOK:
            next.rooks |= target;
            break;
        case PROMOTE_BISHOP:
            next.bishops |= target;
            break;
        default:
            next.knights |= target;
        }
        next.halfmove = 0;
    } else if ((board.pawns & square_bit(from)) != 0) {
        next.halfmove = 0;
        next.ep_square = passed_square(board, from, to, white);
        if (next.ep_square == 0 && board.ep_square != 0 && to == board.ep_square) {
            const Bitboard captured = forward_squares(target, white ? BLACK : WHITE);
            next.white &= ~captured;
            next.black &= ~captured;
            next.pawns &= ~captured;
        }
    } else if (((board.white | board.black) & target) != 0) {
        next.halfmove = 0;
    } else {
        next.halfmove = static_cast<std::uint8_t>(board.halfmove + 1);
    }
    return board_legal_position(next);
}

bool board_in_check(const ProbeBoard& board) {
    const Bitboard king = board.kings & own_men(board);
    if (king == 0)
        return false;
    return attacked_by_enemy(board, lowest_square(king), board.white_to_move != 0);
}

bool board_has_legal_move(const ProbeBoard& board) {
    ProbeMove list[MAX_PROBE_MOVES];
    const ProbeMove* const end = board_moves(board, list);
    for (const ProbeMove* move = list; move != end; ++move) {
        ProbeBoard next;
        if (board_play(next, board, *move))
            return true;
    }
    return false;
}

bool board_is_mate(const ProbeBoard& board) {
    return board_in_check(board) && !board_has_legal_move(board);
}

bool board_is_sane(const ProbeBoard& board) {
    if (popcount(board.kings) != 2 || popcount(board.kings & board.white) != 1 ||
        popcount(board.kings & board.black) != 1 || (board.white & board.black) != 0)
        return false;
    const Bitboard sets[] = {board.kings,   board.queens,  board.rooks,
                             board.bishops, board.knights, board.pawns};
    Bitboard all = 0;
    for (const Bitboard set : sets) {
        if ((all & set) != 0)
            return false;
        all |= set;
    }
    return (board.pawns & LAST_RANKS) == 0 && all == (board.white | board.black) &&
           board_legal_position(board);
}

} // namespace brindlemoth
