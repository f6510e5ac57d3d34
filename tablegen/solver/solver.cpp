#include "solver/solver.h"

#include "solver/zeroing_moves.h"
#include "system/parallel.h"
#include "system/system.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <bit>
#include <mutex>
#include <stdexcept>
#include <string>
#include <utility>

namespace brindlemoth::tablegen {

// Estimated shares of the work on a chunk. The number of plies is not known in advance, so each ply
// counts as the same fraction of what is left.
constexpr double STARTED = 0.35;
constexpr double PART_OF_A_PLY = 0.04;

// The longest way to a zeroing move that the outcomes have room for: far beyond what five men need.
constexpr int MAX_DISTANCE = 2000;

namespace {

// A set of positions with one side to move: a bit for each square of the black king, word by word.
// `filled` has a bit for each word, set where the word may not be empty.
struct PositionSet {
    std::vector<Squares> words;
    std::vector<Squares> filled;
    bool shared = false; // several threads may add at once

    void clear(std::size_t count, bool is_shared) {
        words.assign(count, 0);
        filled.assign((count + 63) / 64, 0);
        shared = is_shared;
    }
    // Requires that all words are empty.
    void mark_empty() { std::fill(filled.begin(), filled.end(), 0); }
    bool is_empty() const {
        return std::all_of(filled.begin(), filled.end(), [](Squares bits) { return bits == 0; });
    }
    void add(std::size_t word, Squares squares) {
        if (squares == 0)
            return;
        set_bits(words[word], squares);
        set_bits(filled[word / 64], Squares{1} << word % 64);
    }
    void set_bits(Squares& target, Squares squares) const {
        if (!shared) {
            target |= squares;
            return;
        }
        const std::atomic_ref<Squares> place(target);
        if ((squares & ~place.load(std::memory_order_relaxed)) != 0)
            place.fetch_or(squares, std::memory_order_relaxed);
    }
};

struct WordSquares {
    std::uint32_t word;
    Squares squares;
};

// What is known so far of the positions of a chunk with one side to move.
struct SideState {
    std::vector<Squares> not_won;   // legal, and not yet known to be won
    std::vector<Squares> undecided; // legal, without a value yet
    // Of the undecided ones, by the best capture or pawn move: a loss or none at all; a blessed
    // loss; a cursed win.
    std::vector<Squares> can_lose;
    std::vector<WordSquares> blessed; // few words have any
    std::vector<WordSquares> cursed;
    PositionSet wins;        // in n plies
    PositionSet losses;      // in n - 1 plies; from decide_wins() on candidates for n + 1 plies
    PositionSet next_losses; // in n plies
};

// The words whose pawns stand on given squares. `word` counts from the first of them. Quiet moves
// stay within a chunk. The values of the positions that its captures and pawn moves lead to are
// known before it is begun.
struct Chunk {
    Table& table;
    Part& part;
    int threads;
    int limit; // of the fifty-move rule, in plies
    std::size_t first_word = 0;
    std::array<SideState, 2> state{}; // by side to move
    std::mutex adding;                // to the blessed and cursed words
};

} // namespace

template <typename Visit> static void for_squares(Squares squares, const Visit& visit) {
    for (; squares != 0; squares &= squares - 1)
        visit(static_cast<std::size_t>(std::countr_zero(squares)));
}

// Calls visit(word) for each word of the set that may not be empty, in rising order in each thread.
template <typename Visit>
static void for_filled(const Chunk& chunk, const PositionSet& set, const Visit& visit) {
    for_range(chunk.threads, set.filled.size(), [&](std::size_t group) {
        for_squares(set.filled[group], [&](std::size_t word) { visit(64 * group + word); });
    });
}

// Visits the word that a move of the white king leads to where this king folds the board, or both
// words: a king on the diagonal leaves two images of the position. Returns what visit() returns.
template <typename Visit>
static bool visit_folded(const Layout& layout, const Placement& placement, std::size_t to,
                         Squares passing, const Visit& visit) {
    Placement after = placement;
    after[0] = static_cast<std::uint8_t>(to);
    const WordPlace place = word_of(layout, after);
    if (!visit(place.word, passing, place.reflection))
        return false;
    if (to % 8 != to / 8 && to % 8 + to / 8 != 7)
        return true;
    const Reflection other = place.reflection ^ DIAGONAL;
    for (std::size_t man = 1; man + 1 < layout.men; ++man)
        after[man] = reflect(other, placement[man]);
    after[0] = reflect(other, to);
    return visit(word_of(layout, after).word, passing, other);
}

// Quiet moves, forward or backward, of the men of `side` but the black king, from the positions of
// a word: calls visit(word, squares, reflection) with the word that a move leads to and the squares
// of the black king that let it pass, until that returns false. The reflection leads to the other
// word. The positions need not be legal.
template <typename Visit>
static void for_quiet_moves(const Layout& layout, const Placement& placement, std::size_t word,
                            Side side, Squares squares, const Visit& visit) {
    const Squares fixed = fixed_men(layout, placement);
    for (std::size_t slot = layout.pawns; slot + 1 < layout.men; ++slot) {
        if (layout.side[slot] != side)
            continue;
        const Kind kind = layout.kind[slot];
        const std::size_t from = placement[slot];
        const bool folds = layout.pawns == 0 && slot == 0;
        const std::size_t others = folds ? 0 : word - (from << layout.shift[slot]);
        for (std::size_t i = 0; i < geometry.ray_count[kind]; ++i) {
            const Ray& ray = geometry.rays[kind][from][i];
            Squares passing = squares;
            for (std::size_t k = 0; k < ray.length; ++k) {
                const std::size_t to = ray.square[k];
                passing &= ~bit(static_cast<int>(to));
                if ((fixed >> to & 1) != 0 || passing == 0)
                    break;
                if (!folds) {
                    if (!visit(others + (to << layout.shift[slot]), passing, Reflection{0}))
                        return;
                    continue;
                }
                if (!visit_folded(layout, placement, to, passing, visit))
                    return;
            }
        }
    }
}

// Adds the positions that one quiet move of the other side leads from, where `open` has them.
static void add_predecessors(Chunk& chunk, std::size_t word, Side side, Squares squares,
                             const std::vector<Squares>& open, PositionSet& set) {
    const Layout& layout = chunk.table.layout;
    const Side mover = opponent(side);
    if (mover == BLACK)
        set.add(word, king_steps(squares) & open[word]);
    for_quiet_moves(layout, placement_of(layout, chunk.first_word + word), word, mover, squares,
                    [&](std::size_t before, Squares passing, Reflection reflection) {
                        if (reflection != 0)
                            passing = reflect_all(reflection, passing);
                        set.add(before, passing & open[before]);
                        return true;
                    });
}

// Of these positions, those without a quiet move to one that is not yet won for the other side.
static Squares without_escape(const Chunk& chunk, std::size_t word, Side side, Squares squares) {
    const Layout& layout = chunk.table.layout;
    const std::vector<Squares>& escapes = chunk.state[opponent(side)].not_won;
    if (side == BLACK)
        squares &= ~king_steps(escapes[word]);
    if (squares == 0)
        return 0;
    for_quiet_moves(layout, placement_of(layout, chunk.first_word + word), word, side, squares,
                    [&](std::size_t after, Squares passing, Reflection reflection) {
                        squares &= ~(passing & reflect_all_back(reflection, escapes[after]));
                        return squares != 0;
                    });
    return squares;
}

// The outcomes of a word.
static Outcome* outcomes_of(Chunk& chunk, std::size_t word, Side side) {
    const std::size_t in_part = chunk.first_word + word - chunk.part.first_word;
    return &chunk.part.outcomes[side][outcome_place(64 * in_part)];
}

// Gives positions of a word their value: won or lost in n plies.
static void decide(Chunk& chunk, std::size_t word, Side side, Squares squares, int n, bool lost) {
    SideState& state = chunk.state[side];
    state.undecided[word] &= ~squares;
    state.can_lose[word] &= ~squares;
    // Other threads read this set while losses are decided, so these must not write to it.
    if (!lost)
        state.not_won[word] &= ~squares;
    const int plies = std::max(n, 1); // a mated side has distance -1
    const int wdl = wdl_of_distance(lost ? -plies : plies, chunk.limit);
    WordValues& values = chunk.table.values[side][chunk.first_word + word];
    for (std::size_t i = 0; i < values.size(); ++i)
        values[i] |= ((wdl + 3) >> i & 1) != 0 ? squares : 0;
    const auto outcome = static_cast<Outcome>(lost ? OUTCOME_LOSS | plies : plies);
    Outcome* const outcomes = outcomes_of(chunk, word, side);
    for_squares(squares, [&](std::size_t square) { outcomes[square] |= outcome; });
}

// Step 1: tells legal positions from others.
static void mark_legal(Chunk& chunk) {
    const Layout& layout = chunk.table.layout;
    for_range(chunk.threads, layout.chunk_words, [&](std::size_t word) {
        const Placement placement = placement_of(layout, chunk.first_word + word);
        for (const Side side : {WHITE, BLACK})
            chunk.state[side].not_won[word] = legal_squares(layout, placement, side);
    });
}

// The values of a word's captures, and those of its captures and pawn moves.
struct ZeroingValues {
    WordValues captures{};
    AtLeast best{};
};

static ZeroingValues zeroing_values(const Chunk& chunk, std::size_t word, Side side) {
    const Squares legal = chunk.state[side].not_won[word];
    if (legal == 0)
        return {};
    const Placement placement = placement_of(chunk.table.layout, chunk.first_word + word);
    ZeroingValues values;
    values.best = best_captures(chunk.table, placement, side);
    values.captures = pack(values.best);
    const AtLeast pawn_moves = best_pawn_moves(chunk.table, placement, side);
    for (std::size_t value = 0; value < values.best.size(); ++value)
        values.best[value] = (values.best[value] | pawn_moves[value]) & legal;
    return values;
}

// Writes what an outcome says of zeroing moves: the best capture, and whether one of them wins.
static void start_outcomes(Outcome* outcomes, Squares legal, const ZeroingValues& values) {
    const auto& [low, middle, high] = values.captures;
    const Squares wins = values.best[4];
    for (std::size_t square = 0; square < 64; ++square) {
        const Squares code = (low >> square & 1) | (middle >> square & 1) << 1 |
                             (high >> square & 1) << 2 | (wins >> square & 1) << 3;
        outcomes[square] = (legal >> square & 1) != 0
                               ? static_cast<Outcome>(code << OUTCOME_CAPTURE)
                               : OUTCOME_ILLEGAL;
    }
}

// Gives the positions without a legal quiet move their value if no zeroing move is better than a
// loss: mates, stalemates, and losses in one ply. `no_better` has the positions without a better
// zeroing move, `zeroing` those that have any.
static void decide_without_quiet_moves(Chunk& chunk, std::size_t word, Side side, Squares no_better,
                                       Squares zeroing) {
    SideState& state = chunk.state[side];
    const Squares in_check = ~chunk.state[opponent(side)].not_won[word];
    // At the start every legal position is one that is not won.
    const Squares stuck = without_escape(chunk, word, side, no_better);
    const Squares stalemates = stuck & ~zeroing & ~in_check;
    const Squares mates = stuck & ~zeroing & in_check;
    state.can_lose[word] = no_better & ~stalemates;
    chunk.table.values[side][chunk.first_word + word] = {0, stalemates, stalemates};
    decide(chunk, word, side, mates, 0, true);
    decide(chunk, word, side, stuck & zeroing, 1, true);
    state.losses.add(word, mates);
    state.next_losses.add(word, stuck & zeroing);
}

// Step 2 for a word: what its captures and pawn moves decide.
static void start_word(Chunk& chunk, std::size_t word, Side side) {
    SideState& state = chunk.state[side];
    const Squares legal = state.not_won[word];
    const ZeroingValues values = zeroing_values(chunk, word, side);
    start_outcomes(outcomes_of(chunk, word, side), legal, values);
    state.undecided[word] = legal;
    const AtLeast& best = values.best;
    state.wins.add(word, best[4]);
    const Squares cursed = best[3] & ~best[4];
    const Squares blessed = best[1] & ~best[2];
    if ((cursed | blessed) != 0) {
        const std::lock_guard<std::mutex> lock(chunk.adding);
        state.cursed.push_back({static_cast<std::uint32_t>(word), cursed});
        state.blessed.push_back({static_cast<std::uint32_t>(word), blessed});
    }
    decide_without_quiet_moves(chunk, word, side, legal & ~best[1], best[0]);
}

static void start_chunk(Chunk& chunk) {
    for (SideState& state : chunk.state) {
        state.blessed.clear();
        state.cursed.clear();
    }
    mark_legal(chunk);
    for_range(chunk.threads, chunk.table.layout.chunk_words, [&](std::size_t word) {
        for (const Side side : {WHITE, BLACK})
            start_word(chunk, word, side);
    });
}

// Cursed wins by a capture or pawn move are wins in the first ply beyond the limit.
static void add_cursed_wins(Chunk& chunk, Side side) {
    SideState& state = chunk.state[side];
    for (const auto& [word, squares] : state.cursed) {
        const Squares due = squares & state.undecided[word];
        state.wins.add(word, due);
        Outcome* const outcomes = outcomes_of(chunk, word, side);
        for_squares(due, [&](std::size_t square) { outcomes[square] |= OUTCOME_ZEROES; });
    }
}

// A position whose best capture or pawn move is a blessed loss loses beyond the limit at the
// earliest.
static void add_blessed_losses(Chunk& chunk, Side side, PositionSet& candidates) {
    SideState& state = chunk.state[side];
    for (const auto& [word, squares] : state.blessed) {
        state.can_lose[word] |= squares;
        candidates.add(word, squares & state.undecided[word]);
    }
}

// Step 3, for n rising, has three parts. First: who can move to a loss in n - 1 wins in n.
static void find_wins(Chunk& chunk, int n) {
    for (const Side side : {WHITE, BLACK}) {
        PositionSet& lost = chunk.state[side].losses;
        SideState& other = chunk.state[opponent(side)];
        for_filled(chunk, lost, [&](std::size_t word) {
            add_predecessors(chunk, word, side, lost.words[word], other.undecided, other.wins);
            lost.words[word] = 0;
        });
        lost.mark_empty();
        if (n == chunk.limit + 1)
            add_cursed_wins(chunk, side);
    }
}

// Second: the wins in n get their value, and who can move to one is a candidate for a loss in
// n + 1. Returns whether there are wins in n.
static bool decide_wins(Chunk& chunk, int n) {
    std::atomic<bool> found{false};
    for (const Side side : {WHITE, BLACK}) {
        PositionSet& wins = chunk.state[side].wins;
        SideState& other = chunk.state[opponent(side)];
        for_filled(chunk, wins, [&](std::size_t word) {
            const Squares won = wins.words[word];
            decide(chunk, word, side, won, n, false);
            add_predecessors(chunk, word, side, won, other.can_lose, other.losses);
            wins.words[word] = 0;
            found.store(true, std::memory_order_relaxed);
        });
        wins.mark_empty();
    }
    return found;
}

// Third: the candidates that can only move to wins lose in n + 1. Returns whether there are losses
// in n or n + 1.
static bool decide_losses(Chunk& chunk, int n) {
    std::atomic<bool> found{false};
    for (const Side side : {WHITE, BLACK}) {
        SideState& state = chunk.state[side];
        PositionSet& candidates = state.losses;
        if (n == chunk.limit)
            add_blessed_losses(chunk, side, candidates);
        for_filled(chunk, candidates, [&](std::size_t word) {
            Squares& lost = candidates.words[word];
            lost = without_escape(chunk, word, side, lost & state.undecided[word]);
            if (lost != 0) {
                decide(chunk, word, side, lost, n + 1, true);
                found.store(true, std::memory_order_relaxed);
            }
        });
        std::swap(state.losses, state.next_losses);
        if (!state.losses.is_empty())
            found = true;
    }
    return found;
}

static void spread(Chunk& chunk, Progress progress) {
    const int limit = chunk.limit;
    const bool has_blessed =
        !chunk.state[WHITE].blessed.empty() || !chunk.state[BLACK].blessed.empty();
    double left = 1 - STARTED;
    for (int n = 1; n <= MAX_DISTANCE; ++n) {
        progress.report(1 - (left -= PART_OF_A_PLY * left));
        find_wins(chunk, n);
        const bool wins = decide_wins(chunk, n);
        const bool losses = decide_losses(chunk, n);
        if (wins || losses)
            continue;
        if (n > limit || !has_blessed)
            return;
        n = std::max(n, limit - 1); // the blessed losses enter next
    }
    throw std::runtime_error(name_of(chunk.table.layout.signature) + " has wins of more than " +
                             std::to_string(MAX_DISTANCE) + " plies");
}

// Step 4: what has no value by then is a draw.
static void mark_draws(Chunk& chunk) {
    for (const Side side : {WHITE, BLACK}) {
        for (std::size_t word = 0; word < chunk.table.layout.chunk_words; ++word) {
            WordValues& values = chunk.table.values[side][chunk.first_word + word];
            const Squares drawn = chunk.state[side].undecided[word] & ~values[2];
            values[0] |= drawn;
            values[1] |= drawn;
        }
    }
}

static void solve_part(Table& table, Part& part, int threads, int limit, Progress progress) {
    const Layout& layout = table.layout;
    const auto number = static_cast<std::size_t>(part.file_position);
    const std::size_t first = layout.part_start[number];
    const std::size_t last = layout.part_start[number + 1];
    part.first_word = first * layout.chunk_words;
    part.words = (last - first) * layout.chunk_words;
    Chunk chunk{table, part, threads, limit, 0, {}, {}};
    for (const Side side : {WHITE, BLACK}) {
        std::vector<Outcome>& outcomes = part.outcomes[side];
        const std::size_t places = outcome_place(64 * part.words);
        outcomes.reserve(places);
        prefer_large_pages(outcomes.data(), places * sizeof(Outcome));
        outcomes.resize(places);
        SideState& state = chunk.state[side];
        for (std::vector<Squares>* words : {&state.not_won, &state.undecided, &state.can_lose})
            words->resize(layout.chunk_words);
        for (PositionSet* set : {&state.wins, &state.losses, &state.next_losses})
            set->clear(layout.chunk_words, threads > 1);
    }
    for (std::size_t i = first; i < last; ++i) {
        chunk.first_word = i * layout.chunk_words;
        start_chunk(chunk);
        spread(chunk, progress.part(1 / static_cast<double>(last - first)));
        mark_draws(chunk);
    }
}

Table& solve(const Signature& signature, TableSet& solved, int threads, const VisitPart& visit,
             Progress progress, int limit) {
    std::unique_ptr<Table> made = prepare_table(signature, solved);
    Table& table = *made;
    add_promotions(table, solved);
    // The threads share out the parts, or the words of a lone one.
    const auto parts = static_cast<std::size_t>(file_positions(signature));
    const int threads_each = std::max(threads / file_positions(signature), 1);
    std::vector<Progress> pieces = progress.parts(2 * parts);
    parallel_for(threads, parts, [&](std::size_t i) {
        Part part{table, static_cast<int>(i), 0, 0, {}};
        solve_part(table, part, parts == 1 ? threads : 1, limit, std::move(pieces[2 * i]));
        if (visit)
            visit(part, threads_each, std::move(pieces[2 * i + 1]));
    });
    solved[name_of(signature)] = std::move(made);
    return table;
}

} // namespace brindlemoth::tablegen
