#include "search/see.h"

#include "board/attacks.h"
#include "board/bitboard.h"

#include <algorithm>

namespace brindlemoth {

namespace {

// Each piece captures at most once.
constexpr int MAX_CAPTURES = 64;

} // namespace

int see(const Position& position, Move move) {
    const int from = move_from(move);
    const int to = move_to(move);
    const auto& pieces = position.pieces;
    int gain[MAX_CAPTURES + 2]; // gain[i]: of the side that makes capture i, if it is the last
    gain[0] = see_bound(position, move);

    const Bitboard queens = pieces[WHITE][QUEEN] | pieces[BLACK][QUEEN];
    const Bitboard diagonal = pieces[WHITE][BISHOP] | pieces[BLACK][BISHOP] | queens;
    const Bitboard straight = pieces[WHITE][ROOK] | pieces[BLACK][ROOK] | queens;

    // The piece on the to-square stays in the occupancy, and so does a pawn taken en passant.
    Bitboard occupancy = position.all_pieces & ~square_bit(from);
    Bitboard attackers =
        ((bishop_attacks(to, occupancy) & diagonal) | (rook_attacks(to, occupancy) & straight) |
         (king_attacks[to] & (pieces[WHITE][KING] | pieces[BLACK][KING])) |
         (knight_attacks[to] & (pieces[WHITE][KNIGHT] | pieces[BLACK][KNIGHT])) |
         (pawn_attacks[BLACK][to] & pieces[WHITE][PAWN]) |
         (pawn_attacks[WHITE][to] & pieces[BLACK][PAWN])) &
        occupancy;

    int attacker = piece_type(position.board[from]);
    int side = position.side ^ 1;
    int depth = 0;
    while (true) {
        gain[depth + 1] = see_values[attacker] - gain[depth];
        if ((attackers & position.occupied[side]) == 0)
            break;
        attacker = PAWN;
        while ((attackers & pieces[side][attacker]) == 0)
            ++attacker;
        const Bitboard capturer = attackers & pieces[side][attacker];
        const Bitboard lowest = capturer & (~capturer + 1);
        occupancy ^= lowest;
        // Add the sliders behind the capturer. Pieces that have captured are not in the occupancy.
        // A pawn or bishop uncovers only diagonals, a rook only files and ranks, a knight nothing.
        if (attacker == PAWN || attacker == BISHOP || attacker >= QUEEN)
            attackers |= bishop_attacks(to, occupancy) & diagonal;
        if (attacker >= ROOK)
            attackers |= rook_attacks(to, occupancy) & straight;
        attackers &= occupancy;
        side ^= 1;
        ++depth;
    }
    // Each capturer but the first captures only if that gains more than to stop.
    while (--depth >= 0)
        gain[depth] = std::min(gain[depth], -gain[depth + 1]);
    return gain[0];
}

} // namespace brindlemoth
