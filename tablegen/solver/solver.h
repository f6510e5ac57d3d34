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
using Cell = std::uint16_t;
constexpr Cell CELL_PLIES = 0x7FF; // size of the distance, 0 in a draw
constexpr Cell CELL_LOSS = 0x800;  // it is the side to move that loses
constexpr int CELL_CAPTURE = 12;   // where the best capture stands: three bits as in WordValues
constexpr Cell CELL_ILLEGAL = 7 << CELL_CAPTURE;
constexpr Cell CELL_ZEROES = 0x8000;

constexpr bool is_legal(Cell cell) {
    return (cell & CELL_ILLEGAL) != CELL_ILLEGAL;
}
constexpr int distance_of(Cell cell) {
    return (cell & CELL_LOSS) != 0 ? -(cell & CELL_PLIES) : cell & CELL_PLIES;
}
// The WDL value of the best capture, -3 if there is none.
constexpr int capture_of(Cell cell) {
    return (cell >> CELL_CAPTURE & 7) - 3;
}
constexpr int wdl_of_distance(int distance, int limit = FIFTY_MOVES) {
    if (distance == 0)
        return 0;
    return distance > 0 ? (distance > limit ? 1 : 2) : (distance < -limit ? -1 : -2);
}

// Where a part keeps the cell of a number, counted from its first word. Room is left between words,
// or those that differ in the square of one man would be multiples of a power of two apart, and
// displace each other from the processor's caches.
constexpr std::size_t place_of_cell(std::size_t number) {
    return number + (number >> 12 << 6) + (number >> 18 << 6);
}

// The solved positions of one file position of a table. They are handed on as soon as they are
// complete, and then forgotten: tables that convert into this one need no more than the values.
struct Part {
    const Table& table;
    int file_position;
    std::size_t first_word;
    std::size_t words;                      // of the part
    std::array<std::vector<Cell>, 2> cells; // by side to move, at their places

    Cell cell(Side side, std::size_t number) const {
        return cells[side][place_of_cell(number - 64 * first_word)];
    }
};
// Called for one part after the other, or for several at once, from as many threads. The second
// is how many threads the visitor may use itself.
using VisitPart = std::function<void(const Part&, int threads, const Progress&)>;

// Solves a signature on that many threads. Everything that it converts into must be in the set;
// the new table is added to it and returned. `limit` is that of the fifty-move rule, in plies,
// the same for all tables of a set: with a low one small endgames have spoilt wins too. Throws
// std::runtime_error where a distance is beyond what a cell has room for.
Table& solve(const Signature& signature, TableSet& solved, int threads, const VisitPart& visit = {},
             const Progress& progress = {}, int limit = FIFTY_MOVES);

} // namespace brindlemoth::tablegen
