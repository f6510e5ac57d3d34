#include "movegen/perft.h"

#include "board/make_move.h"
#include "movegen/legality.h"
#include "movegen/movegen.h"

namespace brindlemoth {

std::uint64_t perft(Position& position, int depth) {
    if (depth == 0)
        return 1;
    if (depth == 1)
        return static_cast<std::uint64_t>(count_legal(position));
    Move buffer[MAX_MOVES];
    const Move* const end = generate_pseudo_legal(position, buffer);
    const LegalityMasks masks = legality_masks(position);
    std::uint64_t count = 0;
    for (const Move* move = buffer; move != end; ++move) {
        if (!move_is_legal(position, masks, *move))
            continue;
        make_move(position, *move);
        count += perft(position, depth - 1);
        unmake_move(position, *move);
    }
    return count;
}

} // namespace brindlemoth
