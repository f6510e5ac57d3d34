#include "book/book.h"
#include "book/polyglot_key.h"
#include "movegen/legality.h"

#include <cstdlib>

namespace brindlemoth {

namespace {

// A move in the book's layout: to file, to rank, from file, from rank, three bits each from the
// lowest up, then the promotion: 0 none, 1 knight, 2 bishop, 3 rook, 4 queen.
int book_move_to(int move) {
    return make_square(move & 7, (move >> 3) & 7);
}
int book_move_from(int move) {
    return make_square((move >> 6) & 7, (move >> 9) & 7);
}
int book_move_promotion(int move) {
    return (move >> 12) & 7;
}

// The index of the first entry with the key, or -1.
int first_entry(std::uint64_t key) {
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

// A random number that is not negative, of 30 bits at least: some libraries draw 15 at a time.
int random_number() {
    const int low = std::rand();
    if constexpr (RAND_MAX < 1 << 15)
        return low | std::rand() << 15;
    else
        return low;
}

// A random one among the moves that stand for the key from `first` on, by their weights, in the
// book's layout. False when all weights are 0.
bool choose_move(int first, std::uint64_t key, int& chosen) {
    constexpr int MAX_CHOICES = 64;
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
    const int pick = random_number() % total;
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

// The legal move that a book move means in the position, or MOVE_NONE.
Move decode_move(Position& position, int book_move) {
    const int from = book_move_from(book_move);
    int to = book_move_to(book_move);
    const int promotion = book_move_promotion(book_move);

    // The book castles by king takes own rook; here the king moves two squares.
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
        // Without a promotion in the entry the first of the four, the queen, is as good.
        if (move_from(move) == from && move_to(move) == to &&
            (promotion == 0 || (is_promotion(move) && promoted_type(move) == promotion)))
            return move;
    }
    return MOVE_NONE;
}

} // namespace

Move book_probe(Position& position) {
    if (!own_book || book_entry_count == 0)
        return MOVE_NONE;
    const std::uint64_t key = polyglot_key(position);
    const int first = first_entry(key);
    int chosen = 0;
    if (first < 0 || !choose_move(first, key, chosen))
        return MOVE_NONE;
    // An entry that is no legal move ends the look-up: another record is not tried.
    return decode_move(position, chosen);
}

} // namespace brindlemoth
