#include "board/fen.h"
#include "shell/position_command.h"
#include "support/support.h"

#include <gtest/gtest.h>

using namespace brindlemoth;

constexpr const char* BEFORE = "8/8/8/3k4/8/3K4/8/8 b - - 0 1";
#define KINGS_AND_PAWN "8/4P2k/8/8/8/8/8/K7 w - - 0 1"

// The key identifies the position, undo_count the number of moves played.
TEST(PositionCommand, StartsAndMoves) {
    const struct {
        const char* line;
        const char* fen; // of the same position
        int moves;
    } ROWS[] = {
        {"position startpos", starting_fen, 0},
        {"positionstartpos", starting_fen, 0},
        {"position startpos e2e4", starting_fen, 0},
        {"position startpos moves e2e4 e7e5",
         "rnbqkbnr/pppp1ppp/8/4p3/4P3/8/PPPP1PPP/RNBQKBNR w KQkq e6 0 2", 2},
        {"position startposmovese2e4", "rnbqkbnr/pppppppp/8/8/4P3/8/PPPP1PPP/RNBQKBNR b KQkq e3",
         1},
        // Tokens that match nothing are dropped one at a time.
        {"position startpos moves e2e4x e2e4q e2e4\te7e5 E2E4 e2 0000 a1a1 g1f3",
         "rnbqkbnr/pppppppp/8/8/8/5N2/PPPPPPPP/RNBQKB1R b KQkq - 1 1", 1},
        // A FEN, with moves behind its six fields only.
        {"position fen    " KINGS_AND_PAWN "    moves    a1a2", "8/4P2k/8/8/8/8/K7/8 b - - 1 1", 1},
        // The words are then read as the fields that are missing.
        {"position fen 8/4P2k/8/8/8/8/8/K7 w moves a1a2", "8/4P2k/8/8/8/8/8/K7 w - a1", 0},
        {"position fen 8/4P2k/8/8/8/8/8/K7 w - - 0 moves a1a2", KINGS_AND_PAWN, 0},
        {"position fen", "", 0},
        // A promotion needs its small letter; what follows the five characters does not matter.
        {"position fen " KINGS_AND_PAWN " moves e7e8q", "4Q3/7k/8/8/8/8/8/K7 b - - 0 1", 1},
        {"position fen " KINGS_AND_PAWN " moves e7e8rook", "4R3/7k/8/8/8/8/8/K7 b - - 0 1", 1},
        {"position fen " KINGS_AND_PAWN " moves e7e8 e7e8Q e7e8k e7e8 q e7e8p", KINGS_AND_PAWN, 0},
        // Castling is the king's move.
        {"position fen 4k3/8/8/8/8/8/8/R3K2R w KQ - 0 1 moves e1h1 e1g1",
         "4k3/8/8/8/8/8/8/R4RK1 b - - 1 1", 1},
        // Anything else changes nothing.
        {"position", BEFORE, 0},
        {"position startpo", BEFORE, 0},
        {"position FEN 8/8 w", BEFORE, 0},
        {"position moves d5e5", BEFORE, 0},
        {"position\tstartpos", BEFORE, 0},
    };
    for (const auto& row : ROWS) {
        Position position = position_from(BEFORE);
        cmd_position(row.line, position);
        EXPECT_EQ(position.key, position_from(row.fen).key) << row.line;
        EXPECT_EQ(position.undo_count, row.moves) << row.line;
    }
}

// The longest lines that can arrive, of moves that can all be played.
TEST(PositionCommand, TheLongestGameLeavesRoomForTheSearch) {
    std::string line = "position startpos moves";
    constexpr const char* SHUFFLE[] = {" g1f3", " g8f6", " f3g1", " f6g8"};
    for (int i = 0; line.size() + 5 < 4096; ++i)
        line += SHUFFLE[i % 4];
    Position position = position_from(starting_fen);
    cmd_position(line.c_str(), position);
    EXPECT_EQ(position.undo_count, static_cast<int>(line.size() - 23) / 5);
    EXPECT_LE(position.undo_count + 128 + 1, MAX_UNDO);
}
