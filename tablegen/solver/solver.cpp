#include "solver/solver.h"

#include "rules/geometry.h"
#include "system/parallel.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <mutex>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>

namespace brindlemoth::tablegen {

// While a chunk is being solved its cells hold codes. A win in n plies is n, a loss in n plies is
// -(n + 1), so that a mated side has -1 and still differs from a loss in one. A cell without a
// value yet is UNDECIDED, plus the number of quiet moves that do not lose yet, plus what the best
// capture or pawn move is worth.
enum Code : int {
    UNDECIDED = 0x4000,
    ZEROING_LOSES = 0,          // or there is none
    ZEROING_IS_BLESSED = 0x100, // a loss saved by the fifty-move rule
    ZEROING_DRAWS = 0x200,
    ZEROING_IS_CURSED = 0x300, // a win spoilt by the fifty-move rule
    ZEROING_MASK = 0x300,
    COUNT_MASK = 0xFF,
};

constexpr std::size_t PIECES_OF_WORK = 256;

// Shares of a chunk's work, about, when a step ends. How many plies the third step takes is known
// only in the end: each takes the same part of what is left.
constexpr double MARKED = 0.05;
constexpr double STARTED = 0.35;
constexpr double PART_OF_A_PLY = 0.04;

using Cell = std::atomic_ref<std::int16_t>;

static int load(const std::int16_t& cell) {
    return Cell(const_cast<std::int16_t&>(cell)).load(std::memory_order_relaxed);
}

static void store(std::int16_t& cell, int code) {
    Cell(cell).store(static_cast<std::int16_t>(code), std::memory_order_relaxed);
}

namespace {

// The part of a table whose pawns stand on given squares. Quiet moves stay within it, and all
// that captures and pawn moves lead to is known before it is begun.
struct Chunk {
    Table& table;
    std::size_t first_cell;
    int threads;
    Progress report; // of this chunk's work; empty for one among many
    // Whether some cell waits for the first ply beyond the limit to become a spoilt win or loss.
    std::atomic<bool> any_waiting{false};

    // A win or loss takes this many plies at least when the fifty-move rule has spoilt it.
    const std::size_t first_spoilt = static_cast<std::size_t>(table.limit) + 1;

    const Layout& layout() const { return table.layout; }
    std::int16_t& cell(int side, std::size_t within) {
        return table.distance[static_cast<std::size_t>(side)][first_cell + within];
    }
};

} // namespace

static Squares occupied_by(const Layout& layout, const Placement& placement, bool* overlap) {
    Squares occupied = 0;
    *overlap = false;
    for (std::size_t slot = 0; slot < layout.men; ++slot) {
        *overlap |= (occupied & bit(placement[slot])) != 0;
        occupied |= bit(placement[slot]);
    }
    return occupied;
}

// Calls visit(cell within the chunk) for each placement that one quiet move, forward or backward,
// of a man of `side` leads to. The cells need not be of legal positions.
template <typename Visit>
static void for_quiet_moves(const Layout& layout, const Placement& placement, std::size_t within,
                            Side side, Squares occupied, const Visit& visit) {
    for (std::size_t slot = layout.pawns; slot < layout.men; ++slot) {
        if (layout.side[slot] != side)
            continue;
        const Kind kind = layout.kind[slot];
        const std::size_t from = placement[slot];
        const std::size_t others = within - (from << layout.shift[slot]);
        for (int i = 0; i < geometry.ray_count[kind]; ++i) {
            const Ray& ray = geometry.rays[kind][from][static_cast<std::size_t>(i)];
            for (std::size_t k = 0; k < ray.length; ++k) {
                const std::size_t to = ray.square[k];
                if ((occupied & bit(static_cast<int>(to))) != 0)
                    break;
                if (slot == 0) {
                    Placement after = placement;
                    after[0] = static_cast<std::uint8_t>(to);
                    visit(cell_of(layout, after));
                } else {
                    visit(others + (to << layout.shift[slot]));
                }
            }
        }
    }
}

// Runs work(first, last) over stretches of the chunk's cells.
template <typename Work> static void for_stretches(const Chunk& chunk, const Work& work) {
    const std::size_t cells = chunk.layout().chunk_cells;
    const std::size_t stretch = std::max<std::size_t>(cells / PIECES_OF_WORK, 1024);
    parallel_for(chunk.threads, (cells + stretch - 1) / stretch,
                 [&](std::size_t i) { work(i * stretch, std::min((i + 1) * stretch, cells)); });
}

// The same, for the part of the chunk's work that lies between two shares of it.
template <typename Work>
static void for_stretches(const Chunk& chunk, double from, double to, const Work& work) {
    std::atomic<std::size_t> cells{0};
    for_stretches(chunk, [&](std::size_t first, std::size_t last) {
        work(first, last);
        cells += last - first;
        if (chunk.report) {
            const double done =
                static_cast<double>(cells) / static_cast<double>(chunk.layout().chunk_cells);
            chunk.report(from + (to - from) * done);
        }
    });
}

// Step 1: tells legal positions from others.
static void mark_illegal(Chunk& chunk) {
    const Layout& layout = chunk.layout();
    for_stretches(chunk, 0, MARKED, [&](std::size_t first, std::size_t last) {
        for (std::size_t within = first; within < last; ++within) {
            const Placement placement = placement_of(layout, chunk.first_cell + within);
            bool overlap;
            const Squares occupied = occupied_by(layout, placement, &overlap);
            // A side to move is impossible when the other side's king could be taken.
            bool impossible[2] = {overlap, overlap};
            for (std::size_t slot = 0; slot < layout.men && !overlap; ++slot) {
                const Side side = layout.side[slot];
                const std::size_t king = layout.king_slot[side == WHITE ? BLACK : WHITE];
                impossible[side] |=
                    attacks(side, layout.kind[slot], placement[slot], placement[king], occupied);
            }
            for (const Side side : {WHITE, BLACK})
                chunk.cell(side, within) =
                    static_cast<std::int16_t>(impossible[side] ? ILLEGAL_DISTANCE : int{UNDECIDED});
        }
    });
}

// What a legal position starts with: its quiet moves counted, its other moves judged.
static int starting_code(Chunk& chunk, std::size_t within, Side side) {
    const Layout& layout = chunk.layout();
    const Side other = side == WHITE ? BLACK : WHITE;
    const Placement placement = placement_of(layout, chunk.first_cell + within);
    const ZeroingMoves zeroing = zeroing_moves(chunk.table, placement, side);
    const int best = std::max(zeroing.best_capture, zeroing.best_pawn_move);
    if (best == 2)
        return 1;
    bool overlap;
    const Squares occupied = occupied_by(layout, placement, &overlap);
    int quiet = 0;
    for_quiet_moves(layout, placement, within, side, occupied, [&](std::size_t after) {
        quiet += load(chunk.cell(other, after)) != ILLEGAL_DISTANCE ? 1 : 0;
    });
    switch (best) {
    case 1:
        return UNDECIDED + ZEROING_IS_CURSED + quiet;
    case 0:
        return UNDECIDED + ZEROING_DRAWS + quiet;
    case -1:
        return UNDECIDED + ZEROING_IS_BLESSED + quiet;
    default:
        break;
    }
    if (quiet > 0)
        return UNDECIDED + ZEROING_LOSES + quiet;
    if (best == -2)
        return -2; // every move loses, and at once
    return king_attacked(layout, placement, side) ? -1 : UNDECIDED + ZEROING_DRAWS;
}

// The longest way to a zeroing move that the codes have room for: far beyond what five men need.
constexpr std::size_t MAX_DISTANCE = 2000;

namespace {

// Which distances some cell of the chunk has taken.
struct Tally {
    std::array<std::atomic<bool>, MAX_DISTANCE + 2> wins{};
    std::array<std::atomic<bool>, MAX_DISTANCE + 2> losses{};
};

} // namespace

static void note(std::atomic<bool>& seen) {
    if (!seen.load(std::memory_order_relaxed))
        seen.store(true, std::memory_order_relaxed);
}

// Step 2: gives every legal position its starting code.
static void start_codes(Chunk& chunk, Tally& tally) {
    for_stretches(chunk, MARKED, STARTED, [&](std::size_t first, std::size_t last) {
        for (std::size_t within = first; within < last; ++within) {
            for (const Side side : {WHITE, BLACK}) {
                std::int16_t& cell = chunk.cell(side, within);
                if (load(cell) == ILLEGAL_DISTANCE)
                    continue;
                const int code = starting_code(chunk, within, side);
                store(cell, code);
                const int zeroing = code & ZEROING_MASK;
                if (code == 1)
                    note(tally.wins[1]);
                else if (code < 0)
                    note(tally.losses[static_cast<std::size_t>(-code - 1)]);
                else if (zeroing == ZEROING_IS_BLESSED || zeroing == ZEROING_IS_CURSED)
                    note(chunk.any_waiting);
            }
        }
    });
}

// Calls visit(side, cell within the chunk, placement) for each cell that holds the code.
template <typename Visit> static void for_code(Chunk& chunk, int code, const Visit& visit) {
    for_stretches(chunk, [&](std::size_t first, std::size_t last) {
        for (const Side side : {WHITE, BLACK}) {
            for (std::size_t within = first; within < last; ++within)
                if (load(chunk.cell(side, within)) == code)
                    visit(side, within);
        }
    });
}

// Calls visit(cell) for each undecided cell of the other side from which a quiet move leads here.
template <typename Visit>
static void for_predecessors(Chunk& chunk, Side side, std::size_t within, const Visit& visit) {
    const Layout& layout = chunk.layout();
    const Side mover = side == WHITE ? BLACK : WHITE;
    const Placement placement = placement_of(layout, chunk.first_cell + within);
    bool overlap;
    const Squares occupied = occupied_by(layout, placement, &overlap);
    for_quiet_moves(layout, placement, within, mover, occupied, [&](std::size_t before) {
        std::int16_t& cell = chunk.cell(mover, before);
        if (load(cell) >= UNDECIDED)
            visit(cell);
    });
}

// Spoilt wins and losses whose captures or pawn moves decide become due at the first ply
// beyond the limit.
static void release_waiting(Chunk& chunk, Tally& tally) {
    const int spoilt = static_cast<int>(chunk.first_spoilt);
    for_stretches(chunk, [&](std::size_t first, std::size_t last) {
        for (const Side side : {WHITE, BLACK}) {
            for (std::size_t within = first; within < last; ++within) {
                std::int16_t& cell = chunk.cell(side, within);
                const int code = load(cell);
                if (code < UNDECIDED)
                    continue;
                if ((code & ZEROING_MASK) == ZEROING_IS_CURSED) {
                    store(cell, spoilt);
                    note(tally.wins[chunk.first_spoilt]);
                } else if (code == UNDECIDED + ZEROING_IS_BLESSED) {
                    store(cell, -(spoilt + 1));
                    note(tally.losses[chunk.first_spoilt]);
                }
            }
        }
    });
}

// Step 3, for n rising: who can move to a loss in n - 1 wins in n; who can only move to wins,
// the longest of them in n, loses in n + 1.
static void spread(Chunk& chunk, Tally& tally) {
    double left = 1 - STARTED;
    for (std::size_t n = 1; n <= MAX_DISTANCE; ++n) {
        left -= PART_OF_A_PLY * left;
        if (chunk.report)
            chunk.report(1 - left);
        if (n == chunk.first_spoilt && chunk.any_waiting)
            release_waiting(chunk, tally);
        if (tally.losses[n - 1]) {
            for_code(chunk, -static_cast<int>(n), [&](Side side, std::size_t within) {
                for_predecessors(chunk, side, within, [&](std::int16_t& cell) {
                    store(cell, static_cast<int>(n));
                    note(tally.wins[n]);
                });
            });
        }
        if (tally.wins[n]) {
            for_code(chunk, static_cast<int>(n), [&](Side side, std::size_t within) {
                for_predecessors(chunk, side, within, [&](std::int16_t& cell) {
                    const int code = Cell(cell).fetch_sub(1, std::memory_order_relaxed) - 1;
                    const bool loses =
                        code == UNDECIDED + ZEROING_LOSES ||
                        (code == UNDECIDED + ZEROING_IS_BLESSED && n + 1 >= chunk.first_spoilt);
                    if (loses) {
                        store(cell, -static_cast<int>(n + 2));
                        note(tally.losses[n + 1]);
                    }
                });
            });
        }
        if (!tally.losses[n - 1] && !tally.wins[n] && !tally.losses[n]) {
            if (n >= chunk.first_spoilt || !chunk.any_waiting)
                return;
            n = chunk.first_spoilt - 1;
        }
    }
    throw std::runtime_error(name_of(chunk.layout().signature) + " has wins of more than " +
                             std::to_string(MAX_DISTANCE) + " plies");
}

// Step 4: turns codes into distances.
static void finish(Chunk& chunk) {
    for_stretches(chunk, [&](std::size_t first, std::size_t last) {
        for (const Side side : {WHITE, BLACK}) {
            for (std::size_t within = first; within < last; ++within) {
                std::int16_t& cell = chunk.cell(side, within);
                if (cell >= UNDECIDED)
                    cell = 0;
                else if (cell < -1 && cell != ILLEGAL_DISTANCE)
                    cell = static_cast<std::int16_t>(cell + 1);
            }
        }
    });
}

static void solve_chunk(Table& table, std::size_t number, int threads, const Progress& report) {
    Chunk chunk{table, number * table.layout.chunk_cells, threads, report};
    Tally tally;
    mark_illegal(chunk);
    start_codes(chunk, tally);
    spread(chunk, tally);
    finish(chunk);
}

// The chunks in the order in which they can be solved: pawns only move forward, so those whose
// pawns have gone furthest come first. Chunks of one group do not depend on each other.
static std::vector<std::vector<std::size_t>> chunk_groups(const Layout& layout) {
    std::vector<std::vector<std::size_t>> groups(layout.pawns * 5 + 1);
    for (std::size_t number = 0; number < layout.chunks; ++number) {
        const Placement placement = placement_of(layout, number * layout.chunk_cells);
        std::size_t to_go = 0;
        for (std::size_t slot = 0; slot < layout.pawns; ++slot) {
            const std::size_t rank = placement[slot] / 8U;
            to_go += layout.side[slot] == WHITE ? 6 - rank : rank - 1;
        }
        groups[to_go].push_back(number);
    }
    return groups;
}

Table& solve(const Signature& signature, TableSet& solved, int threads, const Progress& progress,
             int limit) {
    std::unique_ptr<Table> made = make_table(signature, solved, limit);
    Table& table = *made;
    for (const Side side : {WHITE, BLACK})
        table.distance[side].resize(cells_of(table.layout));
    std::atomic<std::size_t> done{0};
    std::mutex reporting;
    auto report = [&](double share) {
        const std::lock_guard<std::mutex> lock(reporting);
        if (progress)
            progress((static_cast<double>(done) + share) /
                     static_cast<double>(table.layout.chunks));
    };
    for (const std::vector<std::size_t>& group : chunk_groups(table.layout)) {
        // The threads share out the chunks, or a lone chunk's cells.
        const bool lone = group.size() == 1;
        parallel_for(threads, group.size(), [&](std::size_t i) {
            solve_chunk(table, group[i], lone ? threads : 1, lone ? Progress(report) : Progress());
            ++done;
            report(0);
        });
    }
    solved[name_of(signature)] = std::move(made);
    return table;
}

void drop_unneeded(TableSet& tables, std::span<const Signature> to_come) {
    std::set<std::string> needed;
    for (const Signature& signature : to_come)
        for (const Signature& conversion : conversions(signature))
            needed.insert(name_of(conversion));
    std::erase_if(tables, [&](const auto& table) { return !needed.contains(table.first); });
}

Table& solve_closure(const Signature& signature, TableSet& solved, int threads, int limit) {
    for (const Signature& needed : closure({signature}))
        if (solved.find(name_of(needed)) == solved.end())
            solve(needed, solved, threads, {}, limit);
    return *solved.at(name_of(signature));
}

} // namespace brindlemoth::tablegen
