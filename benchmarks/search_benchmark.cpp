// The cost of exchanges and of handing out the moves of a node.
#include "movegen/generate.h"
#include "positions.h"
#include "search/move_picker.h"
#include "search/see.h"

namespace brindlemoth {
namespace {

void bm_see(benchmark::State& state) {
    over_positions(state, [](const Position& position) {
        Move moves[MAX_MOVES];
        int sum = 0;
        for (const Move* move = generate_captures(position, moves); move != moves;)
            sum += see(position, *--move);
        return sum;
    });
}
BENCHMARK(bm_see);

// One node's picker: the first moves only, as where a node cuts off, or all of them.
void bm_picker(benchmark::State& state) {
    over_positions(state, [&](const Position& position) {
        MovePicker picker;
        init_picker(picker, in_check(position), MOVE_NONE, 0, {EMPTY_SQUARE, 0});
        int left = static_cast<int>(state.range(0));
        Move last = MOVE_NONE;
        while (left-- > 0)
            last = next_move(picker, position, false);
        return last;
    });
}
BENCHMARK(bm_picker)->ArgName("moves")->Arg(1)->Arg(4)->Arg(MAX_MOVES);

} // namespace
} // namespace brindlemoth

BENCHMARK_MAIN();
