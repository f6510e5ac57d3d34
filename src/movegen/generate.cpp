#include "movegen/generate.h"

#include "board/bitboard.h"
#include "board/castling.h"
#include "movegen/legality.h"

#include <algorithm>
#include <cstddef>

namespace brindlemoth {

namespace {

// Which moves to generate.
enum MoveKind { ALL_MOVES, CAPTURES, QUIETS };

// The generators below find sets of moves and give them to a sink with its add_...() functions.
// There are two kinds of sink: one writes all pseudo-legal moves to an array, the other counts the
// legal ones.

struct MoveWriter {
    Move* out; // behind the last move

    void add_move(int from, int to, int flag) { *out++ = make_move_code(from, to, flag); }

    // The moves of one piece; `enemies` tells the captures among all moves.
    template <int Type, MoveKind Kind>
    void add_piece_moves(int from, Bitboard targets, Bitboard enemies) {
        while (targets != 0) {
            const int to = pop_lowest(targets);
            const bool capture = Kind == ALL_MOVES ? enemies & square_bit(to) : Kind == CAPTURES;
            add_move(from, to, capture ? FLAG_CAPTURE : FLAG_QUIET);
        }
    }
    // The moves of all pawns that reach these squares by the same step.
    void add_pawn_moves(Bitboard targets, int step, int flag) {
        while (targets != 0) {
            const int to = pop_lowest(targets);
            add_move(to - step, to, flag);
        }
    }
    // Four moves to each square, the queen first; `flag` is that of the promotion to a knight.
    void add_promotions(Bitboard targets, int step, int flag) {
        while (targets != 0) {
            const int to = pop_lowest(targets);
            for (int piece = QUEEN - KNIGHT; piece >= 0; --piece)
                add_move(to - step, to, flag + piece);
        }
    }
    void add_castling(const CastlingMove& castling, int flag) {
        add_move(castling.king_from, castling.king_to, flag);
    }
    void add_en_passant(int from, int to) { add_move(from, to, FLAG_EN_PASSANT); }
};

// The number of squares in `targets` that a pinned piece can go to: those of the line through the
// king and the piece. Never inlined, as pinned pieces are rare and must not slow down the others.
[[gnu::noinline]] int count_pinned(const Position& position, int from, Bitboard targets) {
    const int king = lowest_square(position.pieces[position.side][KING]);
    const Bitboard diagonals = bishop_attacks(king, 0);
    const Bitboard line = (diagonals & square_bit(from)) != 0
                              ? diagonals & bishop_attacks(from, 0)
                              : rook_attacks(king, 0) & rook_attacks(from, 0);
    return popcount(targets & line);
}

// The number of squares in `targets` that the king can go to. The attacks of pawns, knights and the
// other king are excluded as sets, which leaves few squares to be tested for sliders.
inline int count_king_moves(const Position& position, int from, Bitboard targets) {
    const int them = position.side ^ 1;
    const Bitboard* const by = position.pieces[them];
    targets &= ~pawn_attack_set(by[PAWN], them);
    for (Bitboard knights = by[KNIGHT]; knights != 0;)
        targets &= ~knight_attacks[pop_lowest(knights)];
    for (Bitboard kings = by[KING]; kings != 0;)
        targets &= ~king_attacks[pop_lowest(kings)];
    // The king does not shield the squares behind it.
    const Bitboard occupancy = position.all_pieces ^ square_bit(from);
    int count = 0;
    while (targets != 0) {
        const int to = pop_lowest(targets);
        if ((bishop_attacks(to, occupancy) & (by[BISHOP] | by[QUEEN])) == 0 &&
            (rook_attacks(to, occupancy) & (by[ROOK] | by[QUEEN])) == 0)
            ++count;
    }
    return count;
}

// Counts the legal moves of a side with exactly one king: it tests whole sets of moves as
// move_is_legal() tests one move. Most positions have no pinned piece. The counter without Pins
// saves the tests for one, a tenth of the time of perft.
template <bool Pins> struct LegalMoveCounter {
    const Position& position;
    LegalityMasks masks;
    int count = 0;

    template <int Type, MoveKind Kind> void add_piece_moves(int from, Bitboard targets, Bitboard) {
        if constexpr (Type == KING)
            count += count_king_moves(position, from, targets);
        else if (Pins && (masks.needs_full_test >> from & 1) != 0) [[unlikely]]
            count += count_pinned(position, from, targets & masks.check_mask);
        else
            count += popcount(targets & masks.check_mask);
    }
    int count_pawn_moves(Bitboard targets, int step) const {
        targets &= masks.check_mask;
        if constexpr (!Pins)
            return popcount(targets);
        Bitboard pinned =
            targets & (step > 0 ? masks.needs_full_test << step : masks.needs_full_test >> -step);
        int moves = popcount(targets & ~pinned);
        while (pinned != 0) {
            const int to = pop_lowest(pinned);
            moves += count_pinned(position, to - step, square_bit(to));
        }
        return moves;
    }
    void add_pawn_moves(Bitboard targets, int step, int) {
        count += count_pawn_moves(targets, step);
    }
    // Of the four promotions to a square all are legal or none.
    void add_promotions(Bitboard targets, int step, int) {
        count += 4 * count_pawn_moves(targets, step);
    }
    // Always legal: the generator has tested all squares of the king, and the rook comes from the
    // edge.
    void add_castling(const CastlingMove&, int) { ++count; }
    void add_en_passant(int from, int to) {
        count += move_is_legal(position, make_move_code(from, to, FLAG_EN_PASSANT)) ? 1 : 0;
    }
};

// What the pawn moves of one colour differ in.
template <int Us> struct PawnGeometry {
    static constexpr int PUSH = forward_step(Us);
    // The two capture directions, the one whose step is 7 squares first: White's goes to the left,
    // Black's to the right.
    static constexpr int NARROW = Us == WHITE ? 7 : -7;
    static constexpr int WIDE = Us == WHITE ? 9 : -9;
    static constexpr Bitboard LAST_RANK = Us == WHITE ? RANK_8 : RANK_1;
    static constexpr Bitboard FIRST_STEP_RANK = Us == WHITE ? RANK_3 : RANK_6;

    static constexpr Bitboard narrow(Bitboard pawns) {
        return Us == WHITE ? left_pawn_attacks(pawns, Us) : right_pawn_attacks(pawns, Us);
    }
    static constexpr Bitboard wide(Bitboard pawns) {
        return Us == WHITE ? right_pawn_attacks(pawns, Us) : left_pawn_attacks(pawns, Us);
    }
};

template <int Us> Bitboard push_targets(const Position& position) {
    return forward_squares(position.pieces[Us][PAWN], Us) & ~position.all_pieces;
}

template <int Us, typename Sink>
inline void generate_promoting_pushes(const Position& position, Sink& sink) {
    using Geometry = PawnGeometry<Us>;
    sink.add_promotions(push_targets<Us>(position) & Geometry::LAST_RANK, Geometry::PUSH,
                        FLAG_PROMOTION);
}

// Single and double pushes that do not promote.
template <int Us, typename Sink>
inline void generate_quiet_pushes(const Position& position, Sink& sink) {
    using Geometry = PawnGeometry<Us>;
    const Bitboard single = push_targets<Us>(position);
    const Bitboard twice =
        forward_squares(single & Geometry::FIRST_STEP_RANK, Us) & ~position.all_pieces;
    sink.add_pawn_moves(single & ~Geometry::LAST_RANK, Geometry::PUSH, FLAG_QUIET);
    sink.add_pawn_moves(twice, 2 * Geometry::PUSH, FLAG_DOUBLE_PUSH);
}

// Requires ep_square != NO_SQUARE.
template <int Us> bool ep_capture_possible_for(const Position& position) {
    const Bitboard ep = square_bit(position.ep_square);
    return (ep & position.all_pieces) == 0 &&
           (forward_squares(ep, Us ^ 1) & position.pieces[Us ^ 1][PAWN]) != 0;
}

template <int Us, typename Sink>
inline void generate_pawn_captures(const Position& position, Sink& sink) {
    using Geometry = PawnGeometry<Us>;
    const Bitboard pawns = position.pieces[Us][PAWN];
    const Bitboard enemies = position.occupied[Us ^ 1];
    const Bitboard narrow = Geometry::narrow(pawns) & enemies;
    const Bitboard wide = Geometry::wide(pawns) & enemies;
    const Bitboard last = Geometry::LAST_RANK;
    if ((narrow | wide) & last) {
        sink.add_promotions(narrow & last, Geometry::NARROW, FLAG_PROMOTION_CAPTURE);
        sink.add_promotions(wide & last, Geometry::WIDE, FLAG_PROMOTION_CAPTURE);
    }
    sink.add_pawn_moves(narrow & ~last, Geometry::NARROW, FLAG_CAPTURE);
    sink.add_pawn_moves(wide & ~last, Geometry::WIDE, FLAG_CAPTURE);
    if (position.ep_square != NO_SQUARE && ep_capture_possible_for<Us>(position)) {
        Bitboard capturers = pawns & pawn_attacks[Us ^ 1][position.ep_square];
        while (capturers != 0)
            sink.add_en_passant(pop_lowest(capturers), position.ep_square);
    }
}

// The pawn moves, but for the promoting pushes of CAPTURES, which come after all other captures.
template <int Us, MoveKind Kind, typename Sink>
inline void generate_pawn_moves(const Position& position, Sink& sink) {
    if constexpr (Kind == ALL_MOVES)
        generate_promoting_pushes<Us>(position, sink);
    if constexpr (Kind != CAPTURES)
        generate_quiet_pushes<Us>(position, sink);
    if constexpr (Kind != QUIETS)
        generate_pawn_captures<Us>(position, sink);
}

// The moves of one piece type, KNIGHT to KING, to squares inside target.
template <int Us, int Type, MoveKind Kind, typename Sink>
inline void generate_piece_moves(const Position& position, Sink& sink, Bitboard target) {
    for (Bitboard movers = position.pieces[Us][Type]; movers != 0;) {
        const int from = pop_lowest(movers);
        const Bitboard attacks = attacks_from<Type>(from, Us, position.all_pieces);
        sink.template add_piece_moves<Type, Kind>(from, attacks & target,
                                                  position.occupied[Us ^ 1]);
    }
}

template <int Us> inline bool may_castle(const Position& position, const CastlingMove& castling) {
    const auto attacked = [&position](int square) {
        return square_attacked(square, Us ^ 1, position.all_pieces, position);
    };
    // The rights of a FEN are taken on trust, so the pieces may not be there.
    return (position.castling & castling.right) != 0 &&
           (position.all_pieces & castling.must_be_empty) == 0 &&
           position.board[castling.king_from] == make_piece(Us, KING) &&
           position.board[castling.rook_from] == make_piece(Us, ROOK) &&
           !attacked(castling.king_from) && !attacked(castling.rook_to) &&
           !attacked(castling.king_to);
}

template <int Us, typename Sink>
inline void generate_castling_moves(const Position& position, Sink& sink) {
    for (const int flag : {FLAG_SHORT_CASTLING, FLAG_LONG_CASTLING}) {
        const CastlingMove& castling = castling_move(Us, flag);
        if (may_castle<Us>(position, castling))
            sink.add_castling(castling, flag);
    }
}

// All moves of a kind, however many they are. Always inlined, so that the sink stays in registers:
// 2% of the time of perft.
template <int Us, MoveKind Kind, typename Sink>
[[gnu::always_inline]] inline void generate_kind(const Position& position, Sink& sink) {
    const Bitboard target = Kind == ALL_MOVES  ? ~position.occupied[Us]
                            : Kind == CAPTURES ? position.occupied[Us ^ 1]
                                               : ~position.all_pieces;
    generate_pawn_moves<Us, Kind>(position, sink);
    generate_piece_moves<Us, KNIGHT, Kind>(position, sink, target);
    generate_piece_moves<Us, BISHOP, Kind>(position, sink, target);
    generate_piece_moves<Us, ROOK, Kind>(position, sink, target);
    generate_piece_moves<Us, QUEEN, Kind>(position, sink, target);
    generate_piece_moves<Us, KING, Kind>(position, sink, target);
    if constexpr (Kind == CAPTURES)
        generate_promoting_pushes<Us>(position, sink);
    else
        generate_castling_moves<Us>(position, sink);
}

constexpr int MAX_QUEEN_MOVES = 27;
constexpr int MAX_OTHER_MOVES = 14; // of any other piece

// Whether MAX_MOVES is enough by an upper bound from the piece counts: a queen has at most 27
// moves, any other piece 14. This holds in nearly every position of a game.
inline bool moves_must_fit(const Position& position) {
    const int us = position.side;
    const int queens = popcount(position.pieces[us][QUEEN]);
    const int others = popcount(position.occupied[us]) - queens;
    return MAX_QUEEN_MOVES * queens + MAX_OTHER_MOVES * others <= MAX_MOVES;
}

// Generates into a larger buffer first. Never inlined, to keep that buffer out of the stack frames
// of the search.
template <int Us, MoveKind Kind>
[[gnu::noinline]] Move* write_by_overflow_buffer(const Position& position, Move* out) {
    Move all[SQUARE_COUNT * MAX_QUEEN_MOVES];
    MoveWriter writer{all};
    generate_kind<Us, Kind>(position, writer);
    return std::copy_n(all, std::min<std::ptrdiff_t>(writer.out - all, MAX_MOVES), out);
}

// Generates into the caller's buffer if the moves must fit.
template <int Us, MoveKind Kind> Move* write_moves_of(const Position& position, Move* out) {
    if (!moves_must_fit(position)) [[unlikely]]
        return write_by_overflow_buffer<Us, Kind>(position, out);
    MoveWriter writer{out};
    generate_kind<Us, Kind>(position, writer);
    return writer.out;
}

template <MoveKind Kind> Move* write_moves(const Position& position, Move* out) {
    return position.side == WHITE ? write_moves_of<WHITE, Kind>(position, out)
                                  : write_moves_of<BLACK, Kind>(position, out);
}

template <bool Pins> int count_legal_of(const Position& position, const LegalityMasks& masks) {
    LegalMoveCounter<Pins> counter{position, masks};
    if (position.side == WHITE)
        generate_kind<WHITE, ALL_MOVES>(position, counter);
    else
        generate_kind<BLACK, ALL_MOVES>(position, counter);
    return counter.count;
}

} // namespace

bool ep_capture_possible(const Position& position) {
    if (position.ep_square == NO_SQUARE)
        return false;
    return position.side == WHITE ? ep_capture_possible_for<WHITE>(position)
                                  : ep_capture_possible_for<BLACK>(position);
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
    const Bitboard kings = position.pieces[position.side][KING];
    if (kings == 0 || more_than_one(kings) || !moves_must_fit(position)) [[unlikely]] {
        MoveList legal;
        generate_legal(position, legal);
        return legal.count;
    }
    const LegalityMasks masks = legality_masks(position);
    const Bitboard pinned = masks.needs_full_test & position.occupied[position.side] & ~kings;
    return pinned != 0 ? count_legal_of<true>(position, masks)
                       : count_legal_of<false>(position, masks);
}

} // namespace brindlemoth
