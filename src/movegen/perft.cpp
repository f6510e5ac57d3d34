#include "movegen/perft.h"

#include "board/make_move.h"
#include "movegen/generate.h"
#include "movegen/legality.h"

namespace brindlemoth {

std::uint64_t perft(Position& position, int depth) {
    if (depth == 0)
        return 1;
    if (depth == 1)
        return static_cast<std::uint64_t>(count_legal(position));
    MoveList legal;
    generate_legal(position, legal);
    std::uint64_t count = 0;
    for (int i = 0; i < legal.count; ++i) {
        make_move(position, legal.moves[i]);
        count += perft(position, depth - 1);
        unmake_move(position, legal.moves[i]);
    }
    return count;
}

} // namespace brindlemoth
