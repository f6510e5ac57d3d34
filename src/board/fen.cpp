#include "board/fen.h"

#include "board/bitboard.h"
#include "board/keys.h"

#include <cassert>
#include <cstring>

namespace brindlemoth {

namespace {

bool at_field_end(const char* text) {
    return *text == ' ' || *text == '\0';
}

void clear_position(Position& position) {
    std::memset(static_cast<void*>(&position), 0, sizeof position);
    std::memset(position.board, EMPTY_SQUARE, sizeof position.board);
    position.ep_square = NO_SQUARE;
}

void place_piece(Position& position, int piece, int square) {
    const Bitboard bit = square_bit(square);
    position.pieces[piece_colour(piece)][piece_type(piece)] |= bit;
    position.occupied[piece_colour(piece)] |= bit;
    position.all_pieces |= bit;
    position.board[square] = static_cast<SquareContent>(piece);
    position.key ^= piece_keys[piece][square];
    if (piece_type(piece) == PAWN)
        position.pawn_key ^= piece_keys[piece][square];
    position.psq += psq_table[piece][square];
}

// Each read_...() function reads one field and moves `text` behind it.

// Returns false at a character that is not a piece letter and at a piece that would stand off the
// board.
bool read_board(Position& position, const char*& text) {
    int file = 0;
    int rank = 7;
    for (; !at_field_end(text); ++text) {
        const char c = *text;
        if (c == '/') {
            --rank;
            file = 0;
        } else if (c >= '1' && c <= '8') {
            file += c - '0';
        } else {
            const char* const letter = std::strchr(PIECE_LETTERS, c);
            if (letter == nullptr || file > 7 || rank < 0)
                return false;
            place_piece(position, static_cast<int>(letter - PIECE_LETTERS),
                        make_square(file, rank));
            ++file;
        }
    }
    return true;
}

int read_castling(const char*& text) {
    // The letters stand in the order of the bits of the mask.
    constexpr const char* LETTERS = "KQkq";
    int rights = 0;
    for (; !at_field_end(text); ++text)
        if (const char* const letter = std::strchr(LETTERS, *text))
            rights |= 1 << (letter - LETTERS);
    return rights;
}

// NO_SQUARE unless the next two characters name a square.
int read_ep_square(const char*& text) {
    if (*text == '-') {
        ++text;
        return NO_SQUARE;
    }
    if (*text == '\0')
        return NO_SQUARE;
    const int file = *text++ - 'a';
    if (*text == '\0')
        return NO_SQUARE;
    const int rank = *text++ - '1';
    if (file < 0 || file > 7 || rank < 0 || rank > 7)
        return NO_SQUARE;
    return make_square(file, rank);
}

// Takes every character of the field as a decimal digit. The value wraps at 32 bits.
int read_counter(const char*& text) {
    std::uint32_t value = 0;
    for (; !at_field_end(text); ++text)
        value = value * 10U + static_cast<std::uint32_t>(*text - '0');
    return static_cast<int>(value);
}

void skip_one(const char*& text) {
    if (*text != '\0')
        ++text;
}

} // namespace

bool position_set_fen(Position& position, const char* text) {
    clear_position(position);
    if (!read_board(position, text))
        return false;

    skip_one(text);
    position.side = *text == 'b' ? BLACK : WHITE;
    if (position.side == BLACK)
        position.key ^= side_key;

    skip_one(text); // the side
    skip_one(text); // the blank after it
    position.castling = read_castling(text);
    position.key ^= castling_keys[position.castling];

    skip_one(text);
    position.ep_square = read_ep_square(text);
    if (position.ep_square != NO_SQUARE)
        position.key ^= ep_file_keys[file_of(position.ep_square)];

    skip_one(text);
    position.halfmove = read_counter(text);

    position.fullmove = 1;
    skip_one(text);
    if (*text != '\0')
        position.fullmove = read_counter(text);

    assert(views_agree(position) && compute_key(position) == position.key &&
           compute_pawn_key(position) == position.pawn_key &&
           compute_psq(position) == position.psq);
    return true;
}

} // namespace brindlemoth
