#include "board/bitboard.h"
#include "movegen/legality.h"
#include "movegen/movegen.h"

#include <algorithm>
#include <cstddef>
#include <initializer_list>

namespace brindlemoth {

namespace {

// What the pawn moves of one colour differ in.
template <int Us> struct PawnGeometry {
    static constexpr int PUSH = Us == WHITE ? 8 : -8;
    // The two capture directions, the one whose step is 7 squares first.
    static constexpr int NARROW = Us == WHITE ? 7 : -7;
    static constexpr int WIDE = Us == WHITE ? 9 : -9;
    static constexpr Bitboard LAST_RANK = Us == WHITE ? RANK_8 : RANK_1;
    static constexpr Bitboard FIRST_STEP_RANK = Us == WHITE ? RANK_3 : RANK_6;

    static constexpr Bitboard push(Bitboard b) { return Us == WHITE ? b << 8 : b >> 8; }
    // White's narrow captures go toward the a-file, Black's toward the h-file.
    static constexpr Bitboard narrow(Bitboard b) {
        return Us == WHITE ? (b & ~FILE_A) << 7 : (b & ~FILE_H) >> 7;
    }
    static constexpr Bitboard wide(Bitboard b) {
        return Us == WHITE ? (b & ~FILE_H) << 9 : (b & ~FILE_A) >> 9;
    }
};

Move* emit_pawn_moves(Move* out, Bitboard targets, int step, int flag) {
    while (targets != 0) {
        const int to = pop_lowest(targets);
        *out++ = make_move_code(to - step, to, flag);
    }
    return out;
}

// Four moves to each square, the queen first; `flag` is that of the promotion to a knight.
Move* emit_promotions(Move* out, Bitboard targets, int step, int flag) {
    while (targets != 0) {
        const int to = pop_lowest(targets);
        for (int piece = 3; piece >= 0; --piece)
            *out++ = make_move_code(to - step, to, flag + piece);
    }
    return out;
}

template <int Us> Bitboard push_targets(const Position& position) {
    return PawnGeometry<Us>::push(position.pieces[Us][PAWN]) & ~position.all_pieces;
}

template <int Us> Move* generate_promoting_pushes(const Position& position, Move* out) {
    using Geometry = PawnGeometry<Us>;
    return emit_promotions(out, push_targets<Us>(position) & Geometry::LAST_RANK, Geometry::PUSH,
                           FLAG_PROMOTION);
}

// Single and double pushes that do not promote, to squares inside target.
template <int Us>
Move* generate_quiet_pushes(const Position& position, Move* out, Bitboard target) {
    using Geometry = PawnGeometry<Us>;
    const Bitboard single = push_targets<Us>(position);
    const Bitboard twice =
        Geometry::push(single & Geometry::FIRST_STEP_RANK) & ~position.all_pieces;
    out = emit_pawn_moves(out, single & ~Geometry::LAST_RANK & target, Geometry::PUSH, FLAG_QUIET);
    return emit_pawn_moves(out, twice & target, 2 * Geometry::PUSH, FLAG_DOUBLE_PUSH);
}

// Requires ep_square != NO_SQUARE.
template <int Us> bool ep_capture_possible_for(const Position& position) {
    const Bitboard ep = square_bit(position.ep_square);
    return (ep & position.all_pieces) == 0 &&
           (PawnGeometry<Us ^ 1>::push(ep) & position.pieces[Us ^ 1][PAWN]) != 0;
}

template <int Us> Move* generate_pawn_captures(const Position& position, Move* out) {
    using Geometry = PawnGeometry<Us>;
    const Bitboard pawns = position.pieces[Us][PAWN];
    const Bitboard enemies = position.occupied[Us ^ 1];
    const Bitboard narrow = Geometry::narrow(pawns) & enemies;
    const Bitboard wide = Geometry::wide(pawns) & enemies;
    const Bitboard last = Geometry::LAST_RANK;
    if ((narrow | wide) & last) {
        out = emit_promotions(out, narrow & last, Geometry::NARROW, FLAG_PROMOTION_CAPTURE);
        out = emit_promotions(out, wide & last, Geometry::WIDE, FLAG_PROMOTION_CAPTURE);
    }
    out = emit_pawn_moves(out, narrow & ~last, Geometry::NARROW, FLAG_CAPTURE);
    out = emit_pawn_moves(out, wide & ~last, Geometry::WIDE, FLAG_CAPTURE);
    if (position.ep_square != NO_SQUARE && ep_capture_possible_for<Us>(position)) {
        Bitboard capturers = pawns & pawn_attacks[Us ^ 1][position.ep_square];
        while (capturers != 0)
            *out++ = make_move_code(pop_lowest(capturers), position.ep_square, FLAG_EN_PASSANT);
    }
    return out;
}

template <int Us>
Move* generate_pawn_moves_of(const Position& position, Move* out, Bitboard target,
                             bool captures_only) {
    if (!captures_only) {
        out = generate_promoting_pushes<Us>(position, out);
        out = generate_quiet_pushes<Us>(position, out, target);
    }
    return generate_pawn_captures<Us>(position, out);
}

template <int Type>
inline Move* generate_moves_of(const Position& position, Move* out, Bitboard target) {
    const int us = position.side;
    const Bitboard enemies = position.occupied[us ^ 1];
    target &= ~position.occupied[us];
    for (Bitboard movers = position.pieces[us][Type]; movers != 0;) {
        const int from = pop_lowest(movers);
        Bitboard targets = target;
        if constexpr (Type == KNIGHT)
            targets &= knight_attacks[from];
        else if constexpr (Type == BISHOP)
            targets &= bishop_attacks(from, position.all_pieces);
        else if constexpr (Type == ROOK)
            targets &= rook_attacks(from, position.all_pieces);
        else if constexpr (Type == QUEEN)
            targets &= queen_attacks(from, position.all_pieces);
        else
            targets &= king_attacks[from];
        while (targets != 0) {
            const int to = pop_lowest(targets);
            *out++ = make_move_code(from, to, enemies & square_bit(to) ? FLAG_CAPTURE : FLAG_QUIET);
        }
    }
    return out;
}

Move* generate_all_pieces(const Position& position, Move* out, Bitboard target) {
    out = generate_moves_of<KNIGHT>(position, out, target);
    out = generate_moves_of<BISHOP>(position, out, target);
    out = generate_moves_of<ROOK>(position, out, target);
    out = generate_moves_of<QUEEN>(position, out, target);
    return generate_moves_of<KING>(position, out, target);
}

struct CastlingRule {
    int right;
    int king_from;
    int king_to;
    int rook_from;
    Bitboard must_be_empty;
    int path[2]; // besides the king's square, in the order tested
    int flag;
};

constexpr Bitboard bits(int a, int b) {
    return square_bit(a) | square_bit(b);
}

constexpr CastlingRule CASTLING_RULES[2][2] = {
    {{WHITE_SHORT, E1, G1, H1, bits(F1, G1), {F1, G1}, FLAG_SHORT_CASTLING},
     {WHITE_LONG, E1, C1, A1, bits(B1, C1) | square_bit(D1), {D1, C1}, FLAG_LONG_CASTLING}},
    {{BLACK_SHORT, E8, G8, H8, bits(F8, G8), {F8, G8}, FLAG_SHORT_CASTLING},
     {BLACK_LONG, E8, C8, A8, bits(B8, C8) | square_bit(D8), {D8, C8}, FLAG_LONG_CASTLING}}};

bool may_castle(const Position& position, const CastlingRule& rule) {
    const int us = position.side;
    if (!(position.castling & rule.right) || (position.all_pieces & rule.must_be_empty) != 0)
        return false;
    // The rights of a FEN are taken on trust, so the men may not be there.
    if (position.board[rule.king_from] != make_piece(us, KING) ||
        position.board[rule.rook_from] != make_piece(us, ROOK))
        return false;
    for (const int square : {rule.king_from, rule.path[0], rule.path[1]})
        if (square_attacked(square, us ^ 1, position.all_pieces, position))
            return false;
    return true;
}

// The compositions without a limit on their length.

Move* write_pseudo_legal(const Position& position, Move* out) {
    const Bitboard target = ~position.occupied[position.side];
    out = generate_pawn_moves(position, out, target, false);
    out = generate_all_pieces(position, out, target);
    return generate_castling_moves(position, out);
}

Move* write_captures(const Position& position, Move* out) {
    out = generate_pawn_moves(position, out, 0, true);
    out = generate_all_pieces(position, out, position.occupied[position.side ^ 1]);
    return position.side == WHITE ? generate_promoting_pushes<WHITE>(position, out)
                                  : generate_promoting_pushes<BLACK>(position, out);
}

Move* write_quiets(const Position& position, Move* out) {
    const Bitboard target = ~position.all_pieces;
    out = position.side == WHITE ? generate_quiet_pushes<WHITE>(position, out, target)
                                 : generate_quiet_pushes<BLACK>(position, out, target);
    out = generate_all_pieces(position, out, target);
    return generate_castling_moves(position, out);
}

// No side ever has more pseudo-legal moves than this: 63 pieces of up to 27 moves.
constexpr int UNLIMITED_MOVES = 64 * 27;

// An upper bound of the side's moves, from the number of its pieces alone. Nearly every position of
// a real game stays within MAX_MOVES by this count, with four queens and as many pawns for one.
int move_count_bound(const Position& position) {
    const Bitboard* const own = position.pieces[position.side];
    return 12 * popcount(own[PAWN]) + 8 * popcount(own[KNIGHT] | own[KING]) +
           13 * popcount(own[BISHOP]) + 14 * popcount(own[ROOK]) + 27 * popcount(own[QUEEN]) + 2;
}

using Writer = Move* (*)(const Position&, Move*);

// By way of a larger buffer, for moves that may not fit. Never inlined: the buffer must not stand
// in the stack frames of the search.
[[gnu::noinline]] Move* write_by_detour(const Position& position, Move* out, Writer write) {
    Move all[UNLIMITED_MOVES];
    const auto count = std::min<std::ptrdiff_t>(write(position, all) - all, MAX_MOVES);
    return std::copy_n(all, count, out);
}

// Writes straight into the caller's buffer whenever the moves must fit.
template <Writer Write> inline Move* write_limited(const Position& position, Move* out) {
    if (move_count_bound(position) <= MAX_MOVES) [[likely]]
        return Write(position, out);
    return write_by_detour(position, out, Write);
}

} // namespace

Move* generate_pawn_moves(const Position& position, Move* out, Bitboard target,
                          bool captures_only) {
    return position.side == WHITE
               ? generate_pawn_moves_of<WHITE>(position, out, target, captures_only)
               : generate_pawn_moves_of<BLACK>(position, out, target, captures_only);
}

Move* generate_piece_moves(const Position& position, Move* out, int type, Bitboard target) {
    switch (type) {
    case KNIGHT:
        return generate_moves_of<KNIGHT>(position, out, target);
    case BISHOP:
        return generate_moves_of<BISHOP>(position, out, target);
    case ROOK:
        return generate_moves_of<ROOK>(position, out, target);
    case QUEEN:
        return generate_moves_of<QUEEN>(position, out, target);
    case KING:
        return generate_moves_of<KING>(position, out, target);
    default:
        return out;
    }
}

bool ep_capture_possible(const Position& position) {
    if (position.ep_square == NO_SQUARE)
        return false;
    return position.side == WHITE ? ep_capture_possible_for<WHITE>(position)
                                  : ep_capture_possible_for<BLACK>(position);
}

Move* generate_castling_moves(const Position& position, Move* out) {
    for (const CastlingRule& rule : CASTLING_RULES[position.side])
        if (may_castle(position, rule))
            *out++ = make_move_code(rule.king_from, rule.king_to, rule.flag);
    return out;
}

Move* generate_pseudo_legal(const Position& position, Move* out) {
    return write_limited<write_pseudo_legal>(position, out);
}

Move* generate_captures(const Position& position, Move* out) {
    return write_limited<write_captures>(position, out);
}

Move* generate_quiets(const Position& position, Move* out) {
    return write_limited<write_quiets>(position, out);
}

} // namespace brindlemoth
