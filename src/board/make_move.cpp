#include "board/make_move.h"

#include "board/bitboard.h"
#include "board/castling.h"
#include "board/keys.h"

#include <cassert>

namespace brindlemoth {

namespace {

// The castling rights that survive a move from or to a square.
struct CastlingMask {
    int rights[SQUARE_COUNT];
};

constexpr CastlingMask castling_mask = [] {
    CastlingMask mask{};
    for (int& rights : mask.rights)
        rights = WHITE_SHORT | WHITE_LONG | BLACK_SHORT | BLACK_LONG;
    for (const auto& moves : CASTLING_MOVES) {
        for (const CastlingMove& move : moves) {
            mask.rights[move.king_from] &= ~move.right;
            mask.rights[move.rook_from] &= ~move.right;
        }
    }
    return mask;
}();

// The difference of the incremental values from those computed from scratch. It need not be zero:
// psq keeps its sum when the style of the evaluation changes, and key lacks the castling term after
// a failed FEN. But no move changes it, which debug builds check.
struct IncrementalError {
    Key key;
    Key pawn_key;
    Score psq;
    bool operator==(const IncrementalError&) const = default;
};

IncrementalError error_before{};

IncrementalError find_error(const Position& position) {
    return {position.key ^ compute_key(position), position.pawn_key ^ compute_pawn_key(position),
            position.psq - compute_psq(position)};
}

[[maybe_unused]] bool remember_error(const Position& position) {
    error_before = find_error(position);
    return true;
}

[[maybe_unused]] bool is_consistent(const Position& position) {
    return views_agree(position) && find_error(position) == error_before;
}

// These update pieces, occupied, board and psq. The callers set all_pieces when all pieces have
// moved, and the keys: make computes them, unmake restores them from the undo record.

inline void put_piece(Position& position, int colour, int type, int square) {
    const int piece = make_piece(colour, type);
    const Bitboard bit = square_bit(square);
    position.pieces[colour][type] ^= bit;
    position.occupied[colour] ^= bit;
    position.board[square] = static_cast<SquareContent>(piece);
    position.psq += psq_table[piece][square];
}

inline void remove_piece(Position& position, int colour, int type, int square) {
    const int piece = make_piece(colour, type);
    const Bitboard bit = square_bit(square);
    position.pieces[colour][type] ^= bit;
    position.occupied[colour] ^= bit;
    position.board[square] = EMPTY_SQUARE;
    position.psq -= psq_table[piece][square];
}

inline void shift_piece(Position& position, int colour, int type, int from, int to) {
    const int piece = make_piece(colour, type);
    const Bitboard bits = square_bit(from) | square_bit(to);
    position.pieces[colour][type] ^= bits;
    position.occupied[colour] ^= bits;
    position.board[from] = EMPTY_SQUARE;
    position.board[to] = static_cast<SquareContent>(piece);
    position.psq += psq_table[piece][to] - psq_table[piece][from];
}

// Changes which piece stands on the square.
inline void replace_piece(Position& position, int colour, int old_type, int new_type, int square) {
    remove_piece(position, colour, old_type, square);
    put_piece(position, colour, new_type, square);
}

// Saves the state that unmake cannot compute. The caller sets `captured`.
inline UndoRecord& push_undo(Position& position) {
    assert(position.undo_count >= 0 && position.undo_count < MAX_UNDO);
    UndoRecord& record = position.undo[position.undo_count++];
    record = {position.ep_square, position.castling, position.halfmove,
              NO_CAPTURE,         position.key,      position.pawn_key};
    return record;
}

// Restores that state.
inline const UndoRecord& pop_undo(Position& position) {
    const UndoRecord& record = position.undo[--position.undo_count];
    position.ep_square = record.ep_square;
    position.castling = record.castling;
    position.halfmove = record.halfmove;
    position.key = record.key;
    position.pawn_key = record.pawn_key;
    return record;
}

// A counter of a FEN may be at the limit of its type. It wraps then.
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

template <int Us> void make_move_of(Position& position, Move move) {
    const int from = move_from(move);
    const int to = move_to(move);
    const int flag = move_flag(move);

    UndoRecord& record = push_undo(position);
    clear_ep_square(position);
    position.halfmove = add_one(position.halfmove);
    Key key = position.key ^ side_key;

    if (is_capture(move)) {
        const int square = flag == FLAG_EN_PASSANT ? to - forward_step(Us) : to;
        const int victim = position.board[square];
        assert(victim != EMPTY_SQUARE && piece_colour(victim) == (Us ^ 1));
        record.captured = victim - make_piece(Us ^ 1, PAWN);
        remove_piece(position, Us ^ 1, record.captured, square);
        key ^= piece_keys[victim][square];
        if (record.captured == PAWN)
            position.pawn_key ^= piece_keys[victim][square];
        position.halfmove = 0;
    }

    const int piece = position.board[from];
    const int type = piece - make_piece(Us, PAWN);
    assert(piece != EMPTY_SQUARE && piece_colour(piece) == Us);
    shift_piece(position, Us, type, from, to);
    const Key change = piece_keys[piece][from] ^ piece_keys[piece][to];
    key ^= change;
    if (type == PAWN) {
        position.pawn_key ^= change;
        position.halfmove = 0;
        if (flag == FLAG_DOUBLE_PUSH) {
            position.ep_square = from + forward_step(Us);
            key ^= ep_file_keys[file_of(from)];
        } else if (is_promotion(move)) {
            const int promoted = promoted_type(move);
            replace_piece(position, Us, PAWN, promoted, to);
            key ^= piece_keys[piece][to] ^ piece_keys[make_piece(Us, promoted)][to];
            position.pawn_key ^= piece_keys[piece][to];
        }
    } else if (is_castling(move)) {
        constexpr int ROOK_PIECE = make_piece(Us, ROOK);
        const CastlingMove& castling = castling_move(Us, flag);
        assert(type == KING && position.board[castling.rook_from] == ROOK_PIECE);
        shift_piece(position, Us, ROOK, castling.rook_from, castling.rook_to);
        key ^=
            piece_keys[ROOK_PIECE][castling.rook_from] ^ piece_keys[ROOK_PIECE][castling.rook_to];
    }
    position.all_pieces = position.occupied[WHITE] | position.occupied[BLACK];

    const int rights = position.castling & castling_mask.rights[from] & castling_mask.rights[to];
    if (rights != position.castling) {
        key ^= castling_keys[position.castling] ^ castling_keys[rights];
        position.castling = rights;
    }
    position.key = key;
    position.side = Us ^ 1;
    if constexpr (Us == BLACK)
        position.fullmove = add_one(position.fullmove);
}

template <int Us> void unmake_move_of(Position& position, Move move) {
    const int from = move_from(move);
    const int to = move_to(move);
    const int flag = move_flag(move);

    const UndoRecord& record = pop_undo(position);
    position.side = Us;
    if constexpr (Us == BLACK)
        position.fullmove = subtract_one(position.fullmove);

    // The moved piece leaves the to-square before the captured piece is put there.
    if (is_promotion(move))
        replace_piece(position, Us, promoted_type(move), PAWN, to);
    shift_piece(position, Us, position.board[to] - make_piece(Us, PAWN), to, from);
    if (is_capture(move)) {
        const int square = flag == FLAG_EN_PASSANT ? to - forward_step(Us) : to;
        put_piece(position, Us ^ 1, record.captured, square);
    } else if (is_castling(move)) {
        const CastlingMove& castling = castling_move(Us, flag);
        shift_piece(position, Us, ROOK, castling.rook_to, castling.rook_from);
    }
    position.all_pieces = position.occupied[WHITE] | position.occupied[BLACK];
}

} // namespace

void make_move(Position& position, Move move) {
    assert(remember_error(position));
    position.side == WHITE ? make_move_of<WHITE>(position, move)
                           : make_move_of<BLACK>(position, move);
    assert(is_consistent(position));
}

void unmake_move(Position& position, Move move) {
    assert(position.undo_count > 0 && remember_error(position));
    position.side == BLACK ? unmake_move_of<WHITE>(position, move)
                           : unmake_move_of<BLACK>(position, move);
    assert(is_consistent(position));
}

void make_null_move(Position& position) {
    assert(remember_error(position));
    push_undo(position);
    clear_ep_square(position);
    position.key ^= side_key;
    position.side ^= 1;
    position.halfmove = add_one(position.halfmove);
    assert(is_consistent(position));
}

void unmake_null_move(Position& position) {
    assert(position.undo_count > 0 && remember_error(position));
    pop_undo(position);
    position.side ^= 1;
    assert(is_consistent(position));
}

} // namespace brindlemoth
