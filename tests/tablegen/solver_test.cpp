// The solver against itself, against the moves of each position, and against tables made before.
// Two programs take this file: one tries samples, the other everything.
#include "support/support.h"
#include "system/parallel.h"
#include "tablebase/syzygy.h"
#include "tablebase/table_support.h"
#include "tablegen/solved_table.h"

#include <atomic>
#include <filesystem>
#include <gtest/gtest.h>
#include <new>
#include <thread>

using namespace brindlemoth;

// Small endgames have no cursed wins and blessed losses within fifty moves, so they are solved with
// a lower limit.
TEST(TablegenSolver, EveryValueFollowsFromItsMoves) {
    const struct {
        const char* name;
        int limit;
        unsigned one_in;       // words, for a sample
        unsigned beyond_limit; // at least so many cursed wins and blessed losses in the sample
    } rows[] = {
        {"KRvK", 10, 8, 1000}, {"KQvK", 10, 8, 200},    {"KPvK", 10, 16, 300},
        {"KPvK", 4, 16, 300},  {"KPvKP", 10, 1000, 60}, {"KRvKP", 10, 1000, 60},
    };
    std::map<int, SolvedSet> by_limit;
    for (const auto& row : rows) {
        SolvedSet& set = by_limit[row.limit];
        set.limit = row.limit;
        unsigned beyond_limit = 0;
        int wrong = 0;
        for_positions(solve_into(set, row.name, 1),
                      ALL_POSITIONS ? (row.one_in + 15) / 16 : row.one_in,
                      [&](const ProbeBoard& board, tablegen::Outcome outcome) {
                          const int solved = tablegen::distance_of(outcome);
                          beyond_limit += std::abs(solved) > row.limit ? 1 : 0;
                          const int judged = distance_by_moves(set, board);
                          if (judged != solved && wrong++ == 0)
                              ADD_FAILURE() << board_text(board) << ": solved " << solved
                                            << ", judged " << judged;
                      });
        EXPECT_EQ(wrong, 0) << row.name;
        EXPECT_GT(beyond_limit, row.beyond_limit) << row.name;
    }
}

TEST(TablegenSolver, AgreesWithMadeAndPublishedTables) {
    for (const std::string& directory : {tables_directory(), published_tables()}) {
        if (directory.empty())
            continue;
        SCOPED_TRACE(directory);
        syzygy_init(directory.c_str());
        for (const std::string& name : signatures_of(3))
            expect_engine_agrees(name, 1);
        const std::vector<std::string> some = {"KPPvK", "KPvKP", "KRRvK", "KRvKR"};
        for (const std::string& name : ALL_POSITIONS ? signatures_of(4) : some)
            expect_engine_agrees(name, ALL_POSITIONS ? 1 : 97);
    }
    syzygy_init("");
}

TEST(TablegenThreads, WhatAPieceThrowsComesOutWhenAllHaveEnded) {
    for (const int threads : {1, 2, 7}) {
        for (const std::size_t bad : {0U, 5U, 999U}) {
            std::atomic<int> running{0};
            const auto work = [&](std::size_t i) {
                if (i == bad)
                    throw std::bad_alloc();
                ++running;
                std::this_thread::yield();
                --running;
            };
            EXPECT_THROW(tablegen::parallel_for(threads, 1000, work), std::bad_alloc);
            EXPECT_EQ(running, 0);
        }
        std::atomic<std::size_t> sum{0};
        tablegen::parallel_for(threads, 1000, [&](std::size_t i) { sum += i; });
        EXPECT_EQ(sum, 499500U);
    }
}

TEST(TablegenSignature, KnowsWhatThereIs) {
    EXPECT_EQ(tablegen::all_signatures(3).size(), 5U);
    EXPECT_EQ(tablegen::all_signatures(4).size(), 30U);
    EXPECT_EQ(tablegen::all_signatures(5).size(), 110U);
    EXPECT_EQ(tablegen::all_signatures(6).size(), 365U);
    // Its pawn gone or promoted, White's rook gone or Black's, or both at once; and so on down.
    EXPECT_EQ(tablegen::conversions(*tablegen::parse_signature("KRPvKR")).size(), 11U);
    for (const auto& [text, name] : {std::pair{"KRPvKR", "KRPvKR"},
                                     {"KRvKPR", "KRPvKR"},
                                     {"KvKQ", "KQvK"},
                                     {"KNvKQ", "KQvKN"}})
        EXPECT_EQ(name_of(tablegen::parse_signature(text).value()), name) << text;
    for (const char* const text : {"KvK", "", "KQ", "KQvK v", "KQvKvK", "KKvK", "KXvK", "QvK",
                                   "kqvk", "KQQQQQQvK", "KQQQQQQQQQvK"})
        EXPECT_FALSE(tablegen::parse_signature(text)) << text;
}
