#include "eval/kpk.h"

#include "board/attacks.h"
#include "board/bitboard.h"
#include "eval/geometry.h"

namespace brindlemoth {

std::uint8_t kpk_table[KPK_SIZE];

namespace {

// All won positions with the pawn on one square. Each element belongs to a square of the strong
// king and holds the squares of the weak king with which the strong side wins, so that one
// operation on a bitboard decides 64 positions.
struct PawnWins {
    Bitboard strong_to_move[SQUARE_COUNT];
    Bitboard weak_to_move[SQUARE_COUNT];
};

// All squares that a king on one of the given squares attacks.
Bitboard king_attack_set(Bitboard kings) {
    const Bitboard beside = beside_squares(kings);
    const Bitboard rows = kings | beside;
    return beside | rows << 8 | rows >> 8;
}

// The squares of the weak king that are legal with either side to move.
Bitboard weak_king_squares(int strong_king, int pawn) {
    return strong_king == pawn
               ? 0
               : ~(king_attacks[strong_king] | square_bit(strong_king) | square_bit(pawn));
}

// The squares of the weak king with which a pawn move wins.
Bitboard wins_by_pawn_move(const PawnWins wins[], int strong_king, int pawn) {
    const int stop = pawn + 8;
    if (strong_king == stop)
        return 0;
    Bitboard won;
    if (rank_of(pawn) == 6) {
        // A promotion that the weak king can capture does not count as a move.
        const bool guarded = (king_attacks[strong_king] & square_bit(stop)) != 0;
        won = guarded ? ~Bitboard{0} : ~king_attacks[stop];
    } else {
        won = wins[stop].weak_to_move[strong_king];
        if (rank_of(pawn) == 1)
            won |= wins[stop + 8].weak_to_move[strong_king];
    }
    return won & ~square_bit(stop);
}

// The wins with the weak king to move that follow from the known wins with the strong side to move:
// each move of the weak king loses, and it is in check if it has no move.
Bitboard weak_to_move_wins(Bitboard strong_to_move_wins, int strong_king, int pawn) {
    const Bitboard checks = pawn_attacks[WHITE][pawn];
    const Bitboard safe = ~(king_attacks[strong_king] | checks);
    return weak_king_squares(strong_king, pawn) & ~king_attack_set(safe & ~strong_to_move_wins) &
           (king_attack_set(safe) | checks);
}

// Repeats until no win is added. Requires the pawns further up the file to be solved.
void solve_pawn(PawnWins wins[], int pawn) {
    PawnWins& known = wins[pawn];
    for (bool changed = true; changed;) {
        changed = false;
        for (int king = 0; king < SQUARE_COUNT; ++king)
            known.weak_to_move[king] = weak_to_move_wins(known.strong_to_move[king], king, pawn);
        for (int king = 0; king < SQUARE_COUNT; ++king) {
            Bitboard won = wins_by_pawn_move(wins, king, pawn);
            for (Bitboard moves = king_attacks[king] & ~square_bit(pawn); moves != 0;)
                won |= known.weak_to_move[pop_lowest(moves)];
            won &= weak_king_squares(king, pawn) & ~pawn_attacks[WHITE][pawn];
            changed |= won != known.strong_to_move[king];
            known.strong_to_move[king] = won;
        }
    }
}

// The table's value of one position, given the wins of its pawn. A legal position that is not won
// is a draw.
std::uint8_t kpk_classify(const PawnWins& wins, int strong_king, int weak_king, int weak_to_move,
                          int pawn) {
    const Bitboard king = square_bit(weak_king);
    // A side in check must be to move.
    const Bitboard attacked = weak_to_move != 0 ? 0 : pawn_attacks[WHITE][pawn];
    if ((weak_king_squares(strong_king, pawn) & ~attacked & king) == 0)
        return KPK_INVALID;
    const Bitboard* const won = weak_to_move != 0 ? wins.weak_to_move : wins.strong_to_move;
    return (won[strong_king] & king) != 0 ? KPK_WIN : KPK_DRAW;
}

} // namespace

void kpk_init() {
    static PawnWins wins[SQUARE_COUNT];
    for (int rank = 6; rank >= 1; --rank) {
        for (int file = 0; file < 4; ++file) {
            const int pawn = make_square(file, rank);
            solve_pawn(wins, pawn);
            for (int kings = 0; kings < SQUARE_COUNT * SQUARE_COUNT; ++kings) {
                const int strong_king = kings % SQUARE_COUNT;
                const int weak_king = kings / SQUARE_COUNT;
                for (int weak_to_move = 0; weak_to_move < 2; ++weak_to_move)
                    kpk_table[kpk_index(strong_king, weak_king, weak_to_move, pawn)] =
                        kpk_classify(wins[pawn], strong_king, weak_king, weak_to_move, pawn);
            }
        }
    }
}

} // namespace brindlemoth
