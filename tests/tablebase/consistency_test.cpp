#include "tablebase/consistency.h"
#include "tablebase/syzygy.h"
#include "tablebase/table_support.h"

#include <gtest/gtest.h>

namespace brindlemoth {

static std::string test_name(const testing::TestParamInfo<std::string>& info) {
    return info.param;
}

using ThreeMen = testing::TestWithParam<std::string>;

TEST_P(ThreeMen, ValuesFollowFromTheirMoves) {
    SKIP_WITHOUT_TABLES();
    syzygy_init(syzygy_directory().c_str());
    check_consistency(GetParam(), 0);
}

INSTANTIATE_TEST_SUITE_P(Consistency, ThreeMen, testing::ValuesIn(three_men_signatures()),
                         test_name);

} // namespace brindlemoth
