// Pawns on both sides: en passant, promotions of either side, four file positions.

#include "tablebase/consistency.h"
#include "tablebase/syzygy.h"
#include "tablebase/table_support.h"

#include <gtest/gtest.h>

namespace brindlemoth {

TEST(Consistency, PawnAgainstPawn) {
    SKIP_WITHOUT_TABLES();
    syzygy_init(syzygy_directory().c_str());
    check_consistency("KPvKP", 1);
}

} // namespace brindlemoth
