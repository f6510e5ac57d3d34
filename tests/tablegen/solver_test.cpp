#include "system/parallel.h"
#include "tablebase/syzygy.h"
#include "tablebase/table_support.h"
#include "tablegen/solved_table.h"

#include <atomic>
#include <gtest/gtest.h>
#include <new>
#include <thread>

namespace brindlemoth {

TEST(TablegenSolver, SolvesTheSameOnAnyNumberOfThreads) {
    SolvedSet one;
    SolvedSet three;
    const auto& cells = solve_into(one, "KQvKR", 1).parts[0].cells;
    EXPECT_TRUE(solve_into(three, "KQvKR", 3).parts[0].cells == cells);
}

// A sample; long tests take all positions of all endgames.
TEST(TablegenSolver, AgreesWithTheGenuineTables) {
    SKIP_WITHOUT_TABLES();
    syzygy_init(syzygy_directory().c_str());
    SolvedSet set;
    for (const char* name : {"KPvK", "KPPvK", "KPvKP", "KRRvK", "KRvKR"}) {
        const Comparison compared = compare_with_engine(solve_into(set, name), 97);
        EXPECT_EQ(compared.wrong_wdl + compared.wrong_dtz, 0U)
            << name << " of " << compared.positions << ":" << compared.first_wrong;
    }
    syzygy_init("");
}

TEST(TablegenThreads, WhatAPieceThrowsComesOutWhenAllHaveEnded) {
    for (const int threads : {1, 2, 7}) {
        for (const std::size_t bad : {0U, 5U, 999U}) {
            std::atomic<int> running{0};
            std::atomic<std::size_t> begun{0};
            auto work = [&](std::size_t i) {
                ++begun;
                if (i == bad)
                    throw std::bad_alloc();
                ++running;
                std::this_thread::yield();
                --running;
            };
            EXPECT_THROW(tablegen::parallel_for(threads, 1000, work), std::bad_alloc);
            EXPECT_EQ(running, 0);
            EXPECT_GT(begun, bad);
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
    struct {
        const char* text;
        const char* name; // null: no signature
    } const rows[] = {
        {"KRPvKR", "KRPvKR"},   {"KRvKPR", "KRPvKR"},
        {"KPRvKR", "KRPvKR"},   {"KvKQ", "KQvK"},
        {"KNvKQ", "KQvKN"},     {"KvK", nullptr},
        {"", nullptr},          {"KQ", nullptr},
        {"KQvK v", nullptr},    {"KQvKvK", nullptr},
        {"KKvK", nullptr},      {"KXvK", nullptr},
        {"QvK", nullptr},       {"kqvk", nullptr},
        {"KQQQQQQvK", nullptr}, {"KQQQQQQQQQvK", nullptr},
    };
    for (const auto& row : rows) {
        const auto signature = tablegen::parse_signature(row.text);
        EXPECT_EQ(signature ? name_of(*signature) : "none", row.name != nullptr ? row.name : "none")
            << row.text;
    }
}

} // namespace brindlemoth
