#include "eval/kpk.h"

#include "board/attacks.h"
#include "board/bitboard.h"
#include "eval/evaluate.h"

#include <algorithm>
#include <iterator>

namespace brindlemoth {

std::uint8_t kpk_table[KPK_SIZE];

namespace {

int entry(int strong_king, int weak_king, int weak_to_move, int pawn) {
    return kpk_table[kpk_index(strong_king, weak_king, weak_to_move, pawn)];
}

int classify_strong_to_move(int strong_king, int weak_king, int pawn) {
    if ((pawn_attacks[WHITE][pawn] & square_bit(weak_king)) != 0)
        return KPK_INVALID; // the weak side is in check, out of turn
    const Bitboard kings = square_bit(strong_king) | square_bit(weak_king);
    const int stop = pawn + 8;
    const bool stop_free = (kings & square_bit(stop)) == 0;

    // A promotion that the weak king can take counts as no move at all.
    if (rank_of(pawn) == 6 && stop_free &&
        ((king_attacks[weak_king] & square_bit(stop)) == 0 ||
         (king_attacks[strong_king] & square_bit(stop)) != 0))
        return KPK_WIN;

    int results = 0;
    for (Bitboard moves = king_attacks[strong_king] & ~king_attacks[weak_king] & ~square_bit(pawn);
         moves != 0;)
        results |= entry(pop_lowest(moves), weak_king, 1, pawn);
    if (rank_of(pawn) < 6 && stop_free) {
        results |= entry(strong_king, weak_king, 1, stop);
        if (rank_of(pawn) == 1 && (kings & square_bit(stop + 8)) == 0)
            results |= entry(strong_king, weak_king, 1, stop + 8);
    }
    if ((results & KPK_WIN) != 0)
        return KPK_WIN;
    return (results & KPK_UNKNOWN) != 0 ? KPK_UNKNOWN : KPK_DRAW; // stalemate among the draws
}

int classify_weak_to_move(int strong_king, int weak_king, int pawn) {
    int results = 0;
    for (Bitboard moves =
             king_attacks[weak_king] & ~king_attacks[strong_king] & ~pawn_attacks[WHITE][pawn];
         moves != 0;) {
        const int target = pop_lowest(moves);
        if (target == pawn)
            return KPK_DRAW;
        results |= entry(strong_king, target, 0, pawn);
    }
    if ((results & KPK_DRAW) != 0)
        return KPK_DRAW;
    if (results != 0)
        return (results & KPK_UNKNOWN) != 0 ? KPK_UNKNOWN : KPK_WIN;
    const bool checkmate = (pawn_attacks[WHITE][pawn] & square_bit(weak_king)) != 0;
    return checkmate ? KPK_WIN : KPK_DRAW;
}

// Classifies every entry that is still unknown. Returns whether any was decided.
bool sweep() {
    bool changed = false;
    for (int pawn_file = 0; pawn_file < 4; ++pawn_file) {
        for (int pawn_rank = 1; pawn_rank <= 6; ++pawn_rank) {
            const int pawn = make_square(pawn_file, pawn_rank);
            for (int strong_king = 0; strong_king < SQUARE_COUNT; ++strong_king) {
                for (int weak_king = 0; weak_king < SQUARE_COUNT; ++weak_king) {
                    for (int weak_to_move = 0; weak_to_move <= 1; ++weak_to_move) {
                        std::uint8_t& slot =
                            kpk_table[kpk_index(strong_king, weak_king, weak_to_move, pawn)];
                        if (slot == KPK_UNKNOWN) {
                            slot = static_cast<std::uint8_t>(
                                kpk_classify(strong_king, weak_king, weak_to_move, pawn));
                            changed |= slot != KPK_UNKNOWN;
                        }
                    }
                }
            }
        }
    }
    return changed;
}

} // namespace

int kpk_classify(int strong_king, int weak_king, int weak_to_move, int pawn) {
    if (strong_king == weak_king || strong_king == pawn || weak_king == pawn ||
        (king_attacks[strong_king] & square_bit(weak_king)) != 0 || rank_of(pawn) == 0 ||
        rank_of(pawn) == 7)
        return KPK_INVALID;
    return weak_to_move != 0 ? classify_weak_to_move(strong_king, weak_king, pawn)
                             : classify_strong_to_move(strong_king, weak_king, pawn);
}

void kpk_init() {
    std::fill(std::begin(kpk_table), std::end(kpk_table), KPK_UNKNOWN);
    while (sweep()) {
    }
    // What no sweep decides the weak side can hold for ever.
    std::replace(std::begin(kpk_table), std::end(kpk_table), KPK_UNKNOWN, KPK_DRAW);
}

} // namespace brindlemoth
