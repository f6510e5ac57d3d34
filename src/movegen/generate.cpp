#include "board/bitboard.h"
#include "movegen/legality.h"
#include "movegen/movegen.h"

#include <algorithm>
#include <cstddef>

namespace brindlemoth {

namespace {

// Which moves are asked for.
enum MoveKind { ALL_MOVES, CAPTURES, QUIETS };

// The generators find sets of moves and hand them to a sink. Two kinds take them: a place in an
// array, where every move is written, and a counter of the legal ones among them.

// Into an array.

inline Move* add_move(Move* out, int from, int to, int flag) {
    *out = make_move_code(from, to, flag);
    return out + 1;
}

// The moves of one man; `enemies` tells the captures among all moves.
template <MoveKind Kind>
inline Move* add_moves(Move* out, int from, Bitboard targets, Bitboard enemies) {
    while (targets != 0) {
        const int to = pop_lowest(targets);
        const bool capture = Kind == ALL_MOVES ? enemies & square_bit(to) : Kind == CAPTURES;
        out = add_move(out, from, to, capture ? FLAG_CAPTURE : FLAG_QUIET);
    }
    return out;
}

// The moves of all pawns that come to these squares by the same step.
inline Move* add_pawn_moves(Move* out, Bitboard targets, int step, int flag) {
    while (targets != 0) {
        const int to = pop_lowest(targets);
        out = add_move(out, to - step, to, flag);
    }
    return out;
}

// Four moves to each square, the queen first; `flag` is that of the promotion to a knight.
inline Move* add_promotions(Move* out, Bitboard targets, int step, int flag) {
    while (targets != 0) {
        const int to = pop_lowest(targets);
        for (int piece = 3; piece >= 0; --piece)
            out = add_move(out, to - step, to, flag + piece);
    }
    return out;
}

// Into a counter. What move_is_legal() asks of one move is asked here of a whole set at once: men
// that need no trial may go to any of the targets.

struct LegalMoveCounter {
    const Position* position;
    LegalityMasks masks;
    int count;
};

// Moves that come alone are castling and en passant: both are tried.
inline LegalMoveCounter add_move(LegalMoveCounter counter, int from, int to, int flag) {
    counter.count += move_is_legal(*counter.position, make_move_code(from, to, flag)) ? 1 : 0;
    return counter;
}

// Never inlined: the few men whose moves are tried must not slow down the others.
[[gnu::noinline]] int count_by_trial(const Position& position, int from, Bitboard targets) {
    int count = 0;
    while (targets != 0) {
        const Move move = make_move_code(from, pop_lowest(targets), FLAG_QUIET);
        count += move_is_legal(position, move) ? 1 : 0;
    }
    return count;
}

template <MoveKind Kind>
inline LegalMoveCounter add_moves(LegalMoveCounter counter, int from, Bitboard targets, Bitboard) {
    if ((counter.masks.tried >> from & 1) != 0) [[unlikely]]
        counter.count += count_by_trial(*counter.position, from, targets);
    else
        counter.count += popcount(targets & counter.masks.targets);
    return counter;
}

inline LegalMoveCounter add_pawn_moves(LegalMoveCounter counter, Bitboard targets, int step, int) {
    Bitboard tried =
        targets & (step > 0 ? counter.masks.tried << step : counter.masks.tried >> -step);
    counter.count += popcount(targets & ~tried & counter.masks.targets);
    while (tried != 0) {
        const int to = pop_lowest(tried);
        counter.count += count_by_trial(*counter.position, to - step, square_bit(to));
    }
    return counter;
}

// Of the four promotions to a square all are legal or none.
inline LegalMoveCounter add_promotions(LegalMoveCounter counter, Bitboard targets, int step,
                                       int flag) {
    const int before = counter.count;
    counter = add_pawn_moves(counter, targets, step, flag);
    counter.count += 3 * (counter.count - before);
    return counter;
}

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

template <int Us> Bitboard push_targets(const Position& position) {
    return PawnGeometry<Us>::push(position.pieces[Us][PAWN]) & ~position.all_pieces;
}

template <int Us, typename Sink>
Sink generate_promoting_pushes(const Position& position, Sink sink) {
    using Geometry = PawnGeometry<Us>;
    return add_promotions(sink, push_targets<Us>(position) & Geometry::LAST_RANK, Geometry::PUSH,
                          FLAG_PROMOTION);
}

// Single and double pushes that do not promote, to squares inside target.
template <int Us, typename Sink>
Sink generate_quiet_pushes(const Position& position, Sink sink, Bitboard target) {
    using Geometry = PawnGeometry<Us>;
    const Bitboard single = push_targets<Us>(position);
    const Bitboard twice =
        Geometry::push(single & Geometry::FIRST_STEP_RANK) & ~position.all_pieces;
    sink = add_pawn_moves(sink, single & ~Geometry::LAST_RANK & target, Geometry::PUSH, FLAG_QUIET);
    return add_pawn_moves(sink, twice & target, 2 * Geometry::PUSH, FLAG_DOUBLE_PUSH);
}

// Requires ep_square != NO_SQUARE.
template <int Us> bool ep_capture_possible_for(const Position& position) {
    const Bitboard ep = square_bit(position.ep_square);
    return (ep & position.all_pieces) == 0 &&
           (PawnGeometry<Us ^ 1>::push(ep) & position.pieces[Us ^ 1][PAWN]) != 0;
}

template <int Us, typename Sink> Sink generate_pawn_captures(const Position& position, Sink sink) {
    using Geometry = PawnGeometry<Us>;
    const Bitboard pawns = position.pieces[Us][PAWN];
    const Bitboard enemies = position.occupied[Us ^ 1];
    const Bitboard narrow = Geometry::narrow(pawns) & enemies;
    const Bitboard wide = Geometry::wide(pawns) & enemies;
    const Bitboard last = Geometry::LAST_RANK;
    if ((narrow | wide) & last) {
        sink = add_promotions(sink, narrow & last, Geometry::NARROW, FLAG_PROMOTION_CAPTURE);
        sink = add_promotions(sink, wide & last, Geometry::WIDE, FLAG_PROMOTION_CAPTURE);
    }
    sink = add_pawn_moves(sink, narrow & ~last, Geometry::NARROW, FLAG_CAPTURE);
    sink = add_pawn_moves(sink, wide & ~last, Geometry::WIDE, FLAG_CAPTURE);
    if (position.ep_square != NO_SQUARE && ep_capture_possible_for<Us>(position)) {
        Bitboard capturers = pawns & pawn_attacks[Us ^ 1][position.ep_square];
        while (capturers != 0)
            sink = add_move(sink, pop_lowest(capturers), position.ep_square, FLAG_EN_PASSANT);
    }
    return sink;
}

template <int Us>
Move* write_pawn_moves(const Position& position, Move* out, Bitboard target, bool captures_only) {
    if (!captures_only) {
        out = generate_promoting_pushes<Us>(position, out);
        out = generate_quiet_pushes<Us>(position, out, target);
    }
    return generate_pawn_captures<Us>(position, out);
}

template <int Us, int Type, MoveKind Kind, typename Sink>
inline Sink generate_moves_of(const Position& position, Sink sink, Bitboard target) {
    for (Bitboard movers = position.pieces[Us][Type]; movers != 0;) {
        const int from = pop_lowest(movers);
        Bitboard attacks;
        if constexpr (Type == KNIGHT)
            attacks = knight_attacks[from];
        else if constexpr (Type == BISHOP)
            attacks = bishop_attacks(from, position.all_pieces);
        else if constexpr (Type == ROOK)
            attacks = rook_attacks(from, position.all_pieces);
        else if constexpr (Type == QUEEN)
            attacks = queen_attacks(from, position.all_pieces);
        else
            attacks = king_attacks[from];
        sink = add_moves<Kind>(sink, from, attacks & target, position.occupied[Us ^ 1]);
    }
    return sink;
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

template <int Us> inline bool may_castle(const Position& position, const CastlingRule& rule) {
    const auto attacked = [&position](int square) {
        return square_attacked(square, Us ^ 1, position.all_pieces, position);
    };
    // The rights of a FEN are taken on trust, so the men may not be there.
    return (position.castling & rule.right) != 0 &&
           (position.all_pieces & rule.must_be_empty) == 0 &&
           position.board[rule.king_from] == make_piece(Us, KING) &&
           position.board[rule.rook_from] == make_piece(Us, ROOK) && !attacked(rule.king_from) &&
           !attacked(rule.path[0]) && !attacked(rule.path[1]);
}

template <int Us, typename Sink> Sink generate_castling(const Position& position, Sink sink) {
    for (const CastlingRule& rule : CASTLING_RULES[Us])
        if (may_castle<Us>(position, rule))
            sink = add_move(sink, rule.king_from, rule.king_to, rule.flag);
    return sink;
}

// The compositions, however many moves they have.
template <int Us, MoveKind Kind, typename Sink>
Sink generate_kind(const Position& position, Sink sink) {
    const Bitboard target = Kind == ALL_MOVES  ? ~position.occupied[Us]
                            : Kind == CAPTURES ? position.occupied[Us ^ 1]
                                               : ~position.all_pieces;
    if constexpr (Kind == ALL_MOVES)
        sink = generate_promoting_pushes<Us>(position, sink);
    if constexpr (Kind != CAPTURES)
        sink = generate_quiet_pushes<Us>(position, sink, target);
    if constexpr (Kind != QUIETS)
        sink = generate_pawn_captures<Us>(position, sink);
    sink = generate_moves_of<Us, KNIGHT, Kind>(position, sink, target);
    sink = generate_moves_of<Us, BISHOP, Kind>(position, sink, target);
    sink = generate_moves_of<Us, ROOK, Kind>(position, sink, target);
    sink = generate_moves_of<Us, QUEEN, Kind>(position, sink, target);
    sink = generate_moves_of<Us, KING, Kind>(position, sink, target);
    if constexpr (Kind == CAPTURES)
        return generate_promoting_pushes<Us>(position, sink);
    else
        return generate_castling<Us>(position, sink);
}

// No side ever has more pseudo-legal moves than this: 63 pieces of up to 27 moves.
constexpr int UNLIMITED_MOVES = 64 * 27;

// An upper bound of the side's moves: a queen has at most 27, any other piece 14. Nearly every
// position of a real game stays within MAX_MOVES by this count.
inline bool moves_must_fit(const Position& position) {
    const int us = position.side;
    return 14 * popcount(position.occupied[us]) + 13 * popcount(position.pieces[us][QUEEN]) <=
           MAX_MOVES;
}

// By way of a larger buffer, for moves that may not fit. Never inlined: the buffer must not stand
// in the stack frames of the search.
template <int Us, MoveKind Kind>
[[gnu::noinline]] Move* write_by_detour(const Position& position, Move* out) {
    Move all[UNLIMITED_MOVES];
    const Move* const end = generate_kind<Us, Kind>(position, all);
    return std::copy_n(all, std::min<std::ptrdiff_t>(end - all, MAX_MOVES), out);
}

// Writes straight into the caller's buffer whenever the moves must fit.
template <int Us, MoveKind Kind> Move* write_moves_of(const Position& position, Move* out) {
    if (!moves_must_fit(position)) [[unlikely]]
        return write_by_detour<Us, Kind>(position, out);
    return generate_kind<Us, Kind>(position, out);
}

template <MoveKind Kind> Move* write_moves(const Position& position, Move* out) {
    return position.side == WHITE ? write_moves_of<WHITE, Kind>(position, out)
                                  : write_moves_of<BLACK, Kind>(position, out);
}

} // namespace

bool ep_capture_possible(const Position& position) {
    if (position.ep_square == NO_SQUARE)
        return false;
    return position.side == WHITE ? ep_capture_possible_for<WHITE>(position)
                                  : ep_capture_possible_for<BLACK>(position);
}

Move* generate_pawn_moves(const Position& position, Move* out, Bitboard target,
                          bool captures_only) {
    return position.side == WHITE ? write_pawn_moves<WHITE>(position, out, target, captures_only)
                                  : write_pawn_moves<BLACK>(position, out, target, captures_only);
}

Move* generate_piece_moves(const Position& position, Move* out, int type, Bitboard target) {
    const int us = position.side;
    for (Bitboard movers = position.pieces[us][type]; movers != 0;) {
        const int from = pop_lowest(movers);
        const Bitboard attacks = attacks_from(type, from, us, position.all_pieces);
        out = add_moves<ALL_MOVES>(out, from, attacks & target & ~position.occupied[us],
                                   position.occupied[us ^ 1]);
    }
    return out;
}

Move* generate_castling_moves(const Position& position, Move* out) {
    return position.side == WHITE ? generate_castling<WHITE>(position, out)
                                  : generate_castling<BLACK>(position, out);
}

Move* generate_pseudo_legal(const Position& position, Move* out) {
    return write_moves<ALL_MOVES>(position, out);
}

Move* generate_captures(const Position& position, Move* out) {
    return write_moves<CAPTURES>(position, out);
}

Move* generate_quiets(const Position& position, Move* out) {
    return write_moves<QUIETS>(position, out);
}

int count_legal(const Position& position) {
    LegalMoveCounter counter{&position, legality_masks(position), 0};
    if (!moves_must_fit(position)) [[unlikely]] {
        Move moves[MAX_MOVES];
        const Move* const end = generate_pseudo_legal(position, moves);
        for (const Move* move = moves; move != end; ++move)
            counter.count += move_is_legal(position, counter.masks, *move) ? 1 : 0;
    } else if (position.side == WHITE) {
        counter = generate_kind<WHITE, ALL_MOVES>(position, counter);
    } else {
        counter = generate_kind<BLACK, ALL_MOVES>(position, counter);
    }
    return counter.count;
}

} // namespace brindlemoth
