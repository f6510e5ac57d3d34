#include "shell/startup.h"

#include "board/attacks.h"
#include "board/position.h"

namespace brindlemoth {

void start_engine() {
    init_attacks();
    init_keys();
}

void stop_engine() {}

} // namespace brindlemoth
