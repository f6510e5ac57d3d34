// Solves an endgame from nothing by retrograde analysis.
//
// A distance counts plies to the next capture or pawn move with both sides playing for the value:
// positive for the winning side, negative for the losing one, 0 for a draw, of a size above the
// fifty-move rule's limit exactly when the WDL value is -1 or 1. A mated side has distance -1.
#pragma once

#include "solver/table.h"
#include "system/progress.h"

#include <cstdint>
#include <functional>
#include <span>

namespace brindlemoth::tablegen {

// What is known of a position: its distance, the best capture, and whether a capture or pawn move
// wins as well as anything.
using Outcome = std::uint16_t;
constexpr Outcome OUTCOME_PLIES = 0x7FF; // size of the distance, 0 in a draw
constexpr Outcome OUTCOME_LOSS = 0x800;  // it is the side to move that loses
constexpr int OUTCOME_CAPTURE = 12; // where the best capture stands: three bits as in WordValues
constexpr Outcome OUTCOME_ILLEGAL = 7 << OUTCOME_CAPTURE;
constexpr Outcome OUTCOME_ZEROES = 0x8000;

constexpr bool is_legal(Outcome outcome) {
    return (outcome & OUTCOME_ILLEGAL) != OUTCOME_ILLEGAL;
}
constexpr int distance_of(Outcome outcome) {
    return (outcome & OUTCOME_LOSS) != 0 ? -(outcome & OUTCOME_PLIES) : outcome & OUTCOME_PLIES;
}
// The WDL value of the best capture, -3 if there is none.
constexpr int capture_of(Outcome outcome) {
    return (outcome >> OUTCOME_CAPTURE & 7) - 3;
}
constexpr int wdl_of_distance(int distance, int limit = FIFTY_MOVES) {
    if (distance == 0)
        return 0;
    return distance > 0 ? (distance > limit ? 1 : 2) : (distance < -limit ? -1 : -2);
}

// The place of a cell's outcome in its part, for a cell counted from the part's first one. A gap of
// 64 places follows each 64 words, and one more each 4,096 words. Without gaps, positions that
// differ in the square of one man would be a power of two apart, and would displace each other from
// the processor's caches.
constexpr std::size_t outcome_place(std::size_t cell) {
    return cell + (cell >> 12 << 6) + (cell >> 18 << 6);
}

// The solved positions of one file position of a table. They are handed on as soon as they are
// complete, and then forgotten: tables that convert into this one need no more than the values.
struct Part {
    const Table& table;
    int file_position;
    std::size_t first_word;
    std::size_t words;                            // of the part
    std::array<std::vector<Outcome>, 2> outcomes; // by side to move and outcome_place()

    Outcome outcome(Side side, std::size_t cell) const {
        return outcomes[side][outcome_place(cell - 64 * first_word)];
    }
};
// Called for one part after the other, or for several at once, from as many threads. The second
// is how many threads the visitor may use itself.
using VisitPart = std::function<void(const Part&, int threads, Progress)>;

// Solves a signature on that many threads. Everything that it converts into must be in the set;
// the new table is added to it and returned. `limit` is that of the fifty-move rule, in plies,
// the same for all tables of a set: with a low one small endgames have cursed wins too. Throws
// std::runtime_error where a distance is beyond what an outcome has room for.
Table& solve(const Signature& signature, TableSet& solved, int threads, const VisitPart& visit = {},
             Progress progress = {}, int limit = FIFTY_MOVES);

} // namespace brindlemoth::tablegen
