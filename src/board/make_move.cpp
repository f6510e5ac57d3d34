#include "board/make_move.h"

#include "board/bitboard.h"

#include <cassert>

namespace brindlemoth {

namespace {

// What debug builds check around every change (one at a time: the memory is a single one): the
// distance of the running sums from their values from scratch never changes. It is not always zero:
// psq keeps an old sum when the style of the evaluation changes, and key lacks the castling term
// after a failed FEN.
struct Drift {
    Key key;
    Key pawn_key;
    Score psq;
    bool operator==(const Drift&) const = default;
};

Drift drift_before{};

Drift current_drift(const Position& position) {
    return {position.key ^ compute_key(position), position.pawn_key ^ compute_pawn_key(position),
            position.psq - compute_psq(position)};
}

[[maybe_unused]] bool remember_drift(const Position& position) {
    drift_before = current_drift(position);
    return true;
}

[[maybe_unused]] bool drift_unchanged(const Position& position) {
    return views_agree(position) && current_drift(position) == drift_before;
}

// Bitboards, board and psq in one step each; the keys are the callers' business, because taking a
// move back restores them from the undo record.

inline void put_piece(Position& position, int colour, int type, int square) {
    const int piece = make_piece(colour, type);
    const Bitboard bit = square_bit(square);
    position.pieces[colour][type] ^= bit;
    position.occupied[colour] ^= bit;
    position.all_pieces ^= bit;
    position.board[square] = piece;
    position.psq += psq_table[piece][square];
}

inline void remove_piece(Position& position, int colour, int type, int square) {
    const int piece = make_piece(colour, type);
    const Bitboard bit = square_bit(square);
    position.pieces[colour][type] ^= bit;
    position.occupied[colour] ^= bit;
    position.all_pieces ^= bit;
    position.board[square] = EMPTY_SQUARE;
    position.psq -= psq_table[piece][square];
}

inline void shift_piece(Position& position, int colour, int type, int from, int to) {
    const int piece = make_piece(colour, type);
    const Bitboard bits = square_bit(from) | square_bit(to);
    position.pieces[colour][type] ^= bits;
    position.occupied[colour] ^= bits;
    position.all_pieces ^= bits;
    position.board[from] = EMPTY_SQUARE;
    position.board[to] = piece;
    position.psq += psq_table[piece][to] - psq_table[piece][from];
}

inline void push_undo(Position& position) {
    assert(position.undo_count >= 0 && position.undo_count < MAX_UNDO);
    UndoRecord& record = position.undo[position.undo_count];
    record.ep_square = position.ep_square;
    record.castling = position.castling;
    record.halfmove = position.halfmove;
    record.captured = NO_CAPTURE;
    record.key = position.key;
    record.pawn_key = position.pawn_key;
}

inline void restore_from(Position& position, const UndoRecord& record) {
    position.ep_square = record.ep_square;
    position.castling = record.castling;
    position.halfmove = record.halfmove;
    position.key = record.key;
    position.pawn_key = record.pawn_key;
}

// A counter from a FEN may stand at its limit; it then wraps instead of overflowing.
inline int add_one(int counter) {
    return static_cast<int>(static_cast<unsigned>(counter) + 1U);
}

inline int subtract_one(int counter) {
    return static_cast<int>(static_cast<unsigned>(counter) - 1U);
}

inline void clear_ep_square(Position& position) {
    if (position.ep_square != NO_SQUARE) {
        position.key ^= ep_file_keys[file_of(position.ep_square)];
        position.ep_square = NO_SQUARE;
    }
}

} // namespace

// clang-format off
const int castling_mask[64] = {
    ~WHITE_LONG, 15, 15, 15, ~(WHITE_SHORT | WHITE_LONG), 15, 15, ~WHITE_SHORT, // a1 to h1
    15, 15, 15, 15, 15, 15, 15, 15,
    15, 15, 15, 15, 15, 15, 15, 15,
    15, 15, 15, 15, 15, 15, 15, 15,
    15, 15, 15, 15, 15, 15, 15, 15,
    15, 15, 15, 15, 15, 15, 15, 15,
    15, 15, 15, 15, 15, 15, 15, 15,
    ~BLACK_LONG, 15, 15, 15, ~(BLACK_SHORT | BLACK_LONG), 15, 15, ~BLACK_SHORT, // a8 to h8
};
// clang-format on

void make_move(Position& position, Move move) {
    assert(remember_drift(position));
    const int from = move_from(move);
    const int to = move_to(move);
    const int flag = move_flag(move);
    const int us = position.side;
    const int them = us ^ 1;
    const int forward = us == WHITE ? 8 : -8;
    const int piece = position.board[from];
    const int type = piece - 6 * us;
    assert(piece != EMPTY_SQUARE && piece_colour(piece) == us);

    push_undo(position);
    clear_ep_square(position);
    position.halfmove = add_one(position.halfmove);
    Key key = position.key ^ castling_keys[position.castling];

    if (is_capture(move)) {
        const int square = flag == FLAG_EN_PASSANT ? to - forward : to;
        const int victim = position.board[square];
        const int victim_type = victim - 6 * them;
        assert(victim != EMPTY_SQUARE && piece_colour(victim) == them);
        position.undo[position.undo_count].captured = victim_type;
        remove_piece(position, them, victim_type, square);
        key ^= piece_keys[victim][square];
        if (victim_type == PAWN)
            position.pawn_key ^= piece_keys[victim][square];
        position.halfmove = 0;
    }

    if (is_promotion(move)) {
        const int promoted = promoted_type(move);
        remove_piece(position, us, PAWN, from);
        put_piece(position, us, promoted, to);
        key ^= piece_keys[piece][from] ^ piece_keys[make_piece(us, promoted)][to];
        position.pawn_key ^= piece_keys[piece][from];
        position.halfmove = 0;
    } else {
        shift_piece(position, us, type, from, to);
        const Key change = piece_keys[piece][from] ^ piece_keys[piece][to];
        key ^= change;
        if (type == PAWN) {
            position.pawn_key ^= change;
            position.halfmove = 0;
            if (flag == FLAG_DOUBLE_PUSH) {
                position.ep_square = from + forward;
                key ^= ep_file_keys[file_of(from)];
            }
        } else if (flag == FLAG_SHORT_CASTLING || flag == FLAG_LONG_CASTLING) {
            const RookMove rook = castling_rook_move(us, flag);
            assert(type == KING && position.board[rook.from] == make_piece(us, ROOK));
            shift_piece(position, us, ROOK, rook.from, rook.to);
            key ^= piece_keys[make_piece(us, ROOK)][rook.from] ^
                   piece_keys[make_piece(us, ROOK)][rook.to];
        }
    }

    position.castling &= castling_mask[from] & castling_mask[to];
    position.side = them;
    position.key = key ^ castling_keys[position.castling] ^ side_key;
    if (us == BLACK)
        position.fullmove = add_one(position.fullmove);
    ++position.undo_count;
    assert(drift_unchanged(position));
}

void unmake_move(Position& position, Move move) {
    assert(position.undo_count > 0 && remember_drift(position));
    const int from = move_from(move);
    const int to = move_to(move);
    const int flag = move_flag(move);
    const int us = position.side ^ 1;
    const int them = position.side;

    --position.undo_count;
    const UndoRecord& record = position.undo[position.undo_count];
    position.side = us;

    if (flag == FLAG_SHORT_CASTLING || flag == FLAG_LONG_CASTLING) {
        const RookMove rook = castling_rook_move(us, flag);
        shift_piece(position, us, ROOK, rook.to, rook.from);
    }
    // The mover leaves the to-square before the captured piece comes back to it.
    if (is_promotion(move)) {
        remove_piece(position, us, promoted_type(move), to);
        put_piece(position, us, PAWN, from);
    } else {
        shift_piece(position, us, position.board[to] - 6 * us, to, from);
    }
    if (is_capture(move)) {
        const int square = flag == FLAG_EN_PASSANT ? (us == WHITE ? to - 8 : to + 8) : to;
        put_piece(position, them, record.captured, square);
    }

    restore_from(position, record);
    if (us == BLACK)
        position.fullmove = subtract_one(position.fullmove);
    assert(drift_unchanged(position));
}

void make_null_move(Position& position) {
    assert(remember_drift(position));
    push_undo(position);
    clear_ep_square(position);
    position.key ^= side_key;
    position.side ^= 1;
    position.halfmove = add_one(position.halfmove);
    ++position.undo_count;
    assert(drift_unchanged(position));
}

void unmake_null_move(Position& position) {
    assert(position.undo_count > 0 && remember_drift(position));
    position.side ^= 1;
    --position.undo_count;
    restore_from(position, position.undo[position.undo_count]);
    assert(drift_unchanged(position));
}

} // namespace brindlemoth
