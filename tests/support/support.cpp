#include "support/support.h"

#include "board/fen.h"
#include "board/make_move.h"
#include "movegen/legality.h"
#include "support/engine_process.h"

#include <cstddef>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>

namespace brindlemoth {

Position position_from(const std::string& fen) {
    Position position;
    position_set_fen(position, fen.c_str());
    return position;
}

std::string shared_directory() {
    // Optional: a directory "shared" beside the checkout.
    const std::filesystem::path directory =
        std::filesystem::path(BRINDLEMOTH_SOURCE_DIR).parent_path() / "shared";
    return std::filesystem::is_directory(directory) ? directory.string() : std::string();
}

std::string tables_directory() {
    // CTest makes them first. A test program that is started by itself makes what is not there.
    const std::string tablegen = BRINDLEMOTH_TABLEGEN;
    static const ProgramRun run =
        tablegen.empty() ? ProgramRun{}
                         : run_program(tablegen, {"--men", "4", "--out", BRINDLEMOTH_TEST_TABLES});
    EXPECT_EQ(run.status, 0) << run.output;
    return BRINDLEMOTH_TEST_TABLES;
}

const std::vector<std::string>& sample_fens() {
    static const std::vector<std::string> fens = [] {
        std::vector<std::string> lines;
        std::ifstream file(shared_directory() + "/epd/positions.fen");
        for (std::string line; std::getline(file, line);)
            if (!line.empty())
                lines.push_back(line);
        if (lines.empty())
            lines = {
                starting_fen,
                "r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq - 0 1",
                "8/2p5/3p4/KP5r/1R3p1k/8/4P1P1/8 w - - 0 1",
                "r3k2r/Pppp1ppp/1b3nbN/nP6/BBP1P3/q4N2/Pp1P2PP/R2Q1RK1 w kq - 0 1",
                "rnbq1k1r/pp1Pbppp/2p5/8/2B5/8/PPP1NnPP/RNBQK2R w KQ - 1 8",
                "8/PPP4k/8/8/8/8/4Kppp/8 w - - 0 1",
                "2r3k1/5ppp/8/8/8/8/1Q3PPP/6K1 w - - 0 1",
            };
        return lines;
    }();
    return fens;
}

void for_random_positions(int count, std::uint64_t seed,
                          const std::function<void(Position&)>& visit) {
    constexpr int GAME_PLIES = 60;
    std::mt19937_64 random(seed);
    const std::vector<std::string>& fens = sample_fens();
    while (count > 0) {
        const std::string& fen = fens[random() % fens.size()];
        Position position = position_from(fen);
        std::string played;
        for (int ply = 0; ply < GAME_PLIES && count > 0; ++ply, --count) {
            visit(position);
            if (testing::Test::HasFailure()) {
                ADD_FAILURE() << "in position fen " << fen << " moves" << played;
                return;
            }
            MoveList legal;
            generate_legal(position, legal);
            if (legal.count == 0)
                break;
            const Move move = legal.moves[random() % static_cast<unsigned>(legal.count)];
            played += std::string(" ") + move_to_text(move);
            make_move(position, move);
        }
    }
}

std::string strewn_fen(std::mt19937_64& random, std::string_view men) {
    std::string fen(71, '/');
    for (std::size_t square = 0; square < SQUARE_COUNT; ++square)
        fen[square + square / 8] = men[random() % men.size()];
    fen += random() % 2 == 0 ? " w KQkq " : " b KQkq ";
    fen += "abcdefgh"[random() % 8];
    return fen + "36"[random() % 2];
}

Move legal_move(const Position& position, const std::string& text) {
    MoveList legal;
    generate_legal(position, legal);
    for (int i = 0; i < legal.count; ++i)
        if (text == move_to_text(legal.moves[i]))
            return legal.moves[i];
    return MOVE_NONE;
}

bool same_position(const Position& a, const Position& b) {
    return std::memcmp(&a, &b, offsetof(Position, undo)) == 0 &&
           std::memcmp(a.undo, b.undo,
                       static_cast<std::size_t>(a.undo_count) * sizeof(UndoRecord)) == 0;
}

} // namespace brindlemoth
