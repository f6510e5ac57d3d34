// A solved endgame in memory, and the questions that can be asked of it: the value of a position,
// what its captures and pawn moves lead to, what an en-passant capture adds.
//
// Values are those of table files. A WDL value runs from -2 (loss) over -1 (a loss that the
// fifty-move rule makes a draw), 0, 1 (a win that the rule makes a draw) to 2 (win). A distance
// counts plies to the next capture or pawn move with both sides playing for the value: positive
// for the winning side, negative for the losing one, 0 for a draw, of a size above the fifty-move
// rule's limit exactly when the WDL value is -1 or 1. A mated side has distance -1.
#pragma once

#include "solver/layout.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace brindlemoth::tablegen {

constexpr int ILLEGAL_DISTANCE = INT16_MIN; // the cell stands for no legal position
constexpr int ILLEGAL_WDL = INT8_MIN;
constexpr int FIFTY_MOVES = 100; // plies; table files know no other limit
constexpr int NO_VALUE = -3;     // below every WDL value: no such move

struct Table;

// Where a position stands after a capture, a promotion or both: the other table, and for each of
// its slots the slot that the man had before.
struct Conversion {
    const Table* table = nullptr;
    bool exchanged = false; // the other table names the sides the other way round
    std::array<std::uint8_t, 8> slot{};
};

struct Table {
    Layout layout;
    // The greatest distance of a win that the fifty-move rule does not spoil, in plies.
    int limit = FIFTY_MOVES;
    // By side to move, then by cell. Distances are dropped once the files are written; tables
    // that convert into this one need no more than the WDL values.
    std::array<std::vector<std::int16_t>, 2> distance;
    std::array<std::vector<std::int8_t>, 2> wdl;
    // By captured slot, promoting slot (the number of men where there is none) and promoted kind.
    std::vector<Conversion> conversions;
};

// All tables solved so far, by name.
using TableSet = std::map<std::string, std::unique_ptr<Table>>;

constexpr int wdl_of_distance(int distance, int limit = FIFTY_MOVES) {
    if (distance == 0)
        return 0;
    return distance > 0 ? (distance > limit ? 1 : 2) : (distance < -limit ? -1 : -2);
}

// The distance that a WDL value stands for when the next move zeroes: -1, -101, 0, 101, 1.
constexpr int distance_of_zeroing(int wdl, int limit = FIFTY_MOVES) {
    const int distance[5] = {-1, -limit - 1, 0, limit + 1, 1};
    return distance[wdl + 2];
}

// The WDL value of a cell, ILLEGAL_WDL if it stands for no legal position.
int wdl_at(const Table& table, Side side, std::size_t cell);

// The best WDL values that the side to move reaches by legal captures and by legal pawn moves
// that capture nothing (promotions among them), NO_VALUE without such moves. En-passant captures
// are not looked at. Requires a placement with no two men on one square.
struct ZeroingMoves {
    int best_capture = NO_VALUE;
    int best_pawn_move = NO_VALUE;
};
ZeroingMoves zeroing_moves(const Table& table, const Placement& placement, Side side);

// Its first half alone.
int best_capture(const Table& table, const Placement& placement, Side side);

// Whether the side to move has a legal move, en passant apart.
bool has_legal_move(const Table& table, const Placement& placement, Side side);

// Whether `side`'s king is attacked.
bool king_attacked(const Layout& layout, const Placement& placement, Side side);

// The distance of the position in which the man in slot `pushed`, a pawn of the other side, has
// just made a double step. The same as without the right to capture it if no pawn can.
int distance_with_en_passant(const Table& table, const Placement& placement, Side side,
                             std::size_t pushed);

// Prepares an unsolved table; everything that the signature converts into must be in the set.
std::unique_ptr<Table> make_table(const Signature& signature, const TableSet& solved, int limit);

// Replaces the distances by WDL values.
void drop_distances(Table& table);

} // namespace brindlemoth::tablegen
