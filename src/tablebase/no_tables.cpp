// There is no reader of endgame tables yet. The limit stays 0, so that nothing is ever probed.

#include "tablebase/syzygy.h"

namespace brindlemoth {

std::uint32_t syzygy_max_men;
std::int32_t syzygy_probe_limit;

bool syzygy_init(const char*) {
    return true;
}

int syzygy_wdl(const ProbeBoard&, int& success) {
    success = 0;
    return 0;
}

bool syzygy_root_move(Position&, Move&) {
    return false;
}

void board_from_position(const Position&, ProbeBoard&) {}

} // namespace brindlemoth
