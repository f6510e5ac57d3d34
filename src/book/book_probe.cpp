#include "book/book.h"
#include "book/polyglot_key.h"
#include "movegen/legality.h"

#include <cstdlib>

namespace brindlemoth {

namespace {

// The fields of a move in the layout of the file, three bits each, from the lowest bit up.
// PROMOTION is 0 for none, 1 knight, 2 bishop, 3 rook, 4 queen.
enum BookMoveField { TO_FILE, TO_RANK, FROM_FILE, FROM_RANK, PROMOTION };

int get_field(int book_move, BookMoveField field) {
    constexpr int FIELD_BITS = 3;
    return (book_move >> (field * FIELD_BITS)) & ((1 << FIELD_BITS) - 1);
}

// Returns the index of the first entry with the key, or -1.
int find_first_entry(std::uint64_t key) {
    int lo = 0;
    int hi = book_entry_count - 1;
    while (lo <= hi) {
        int mid = (lo + hi) / 2;
        if (book_entries[mid].key < key) {
            lo = mid + 1;
        } else if (book_entries[mid].key > key) {
            hi = mid - 1;
        } else {
            while (mid > 0 && book_entries[mid - 1].key == key)
                --mid;
            return mid;
        }
    }
    return -1;
}

// Draws a non-negative random number of at least 30 bits. In some libraries rand() has only 15
// bits; two draws are combined there.
int draw_random_number() {
    constexpr int LEAST_RAND_BITS = 15;
    const int low = std::rand();
    if constexpr (RAND_MAX < 1 << LEAST_RAND_BITS)
        return low | std::rand() << LEAST_RAND_BITS;
    else
        return low;
}

// Chooses one of the moves that are stored for the key from index `first` on, at random by their
// weights. `chosen` is in the layout of the file. Returns false if all weights are 0.
bool choose_move(int first, std::uint64_t key, int& chosen) {
    constexpr int MAX_CHOICES = 64; // later entries of the same key are ignored
    int moves[MAX_CHOICES];
    int weights[MAX_CHOICES];
    int count = 0;
    int total = 0;
    for (int i = first; i < book_entry_count && book_entries[i].key == key && count < MAX_CHOICES;
         ++i) {
        moves[count] = book_entries[i].move;
        weights[count] = book_entries[i].weight;
        total += weights[count];
        ++count;
    }
    if (total == 0)
        return false;
    const int pick = draw_random_number() % total;
    int running = 0;
    for (int i = 0; i < count; ++i) {
        running += weights[i];
        if (pick < running) {
            chosen = moves[i];
            return true;
        }
    }
    return false;
}

// Returns the legal move that a book move stands for in the position, or MOVE_NONE.
Move decode_move(const Position& position, int book_move) {
    const int from = make_square(get_field(book_move, FROM_FILE), get_field(book_move, FROM_RANK));
    int to = make_square(get_field(book_move, TO_FILE), get_field(book_move, TO_RANK));
    const int promotion = get_field(book_move, PROMOTION);

    // The file stores castling as the king's move to the square of its own rook. The engine moves
    // the king by two squares.
    const int mover = position.board[from];
    if (mover != EMPTY_SQUARE && piece_type(mover) == KING && file_of(from) == file_of(E1)) {
        if (file_of(to) == file_of(H1))
            to = make_square(file_of(G1), rank_of(from));
        else if (file_of(to) == file_of(A1))
            to = make_square(file_of(C1), rank_of(from));
    }

    MoveList legal;
    generate_legal(position, legal);
    for (int i = 0; i < legal.count; ++i) {
        const Move move = legal.moves[i];
        // A promotion without a piece in the book matches the first of the four, the queen.
        if (move_from(move) == from && move_to(move) == to &&
            (promotion == 0 || (is_promotion(move) && promoted_type(move) == promotion)))
            return move;
    }
    return MOVE_NONE;
}

} // namespace

Move book_probe(const Position& position) {
    if (!own_book || book_entry_count == 0)
        return MOVE_NONE;
    const std::uint64_t key = polyglot_key(position);
    const int first = find_first_entry(key);
    int chosen = 0;
    if (first < 0 || !choose_move(first, key, chosen))
        return MOVE_NONE;
    // If the chosen move is not legal, no other entry is tried.
    return decode_move(position, chosen);
}

} // namespace brindlemoth
