#include "shell/startup.h"

#include "board/attacks.h"
#include "board/keys.h"
#include "eval/evaluate.h"
#include "eval/kpk.h"
#include "search/search.h"
#include "search/transposition.h"
#include "shell/options.h"

namespace brindlemoth {

void start_engine() {
    init_attacks();
    init_keys();
    init_eval_tables();
    init_reductions();
    kpk_init();
    tt_resize(DEFAULT_HASH_MEGABYTES);
}

void stop_engine() {
    tt_release();
}

} // namespace brindlemoth
