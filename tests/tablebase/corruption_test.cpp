// A part of the damage that corruption_long_test.cpp does.

#include "tablebase/corruption.h"
#include "tablebase/table_support.h"

#include <gtest/gtest.h>

namespace brindlemoth {

static std::string corruption_test_name(const testing::TestParamInfo<std::string>& file) {
    std::string name = file.param;
    name[name.find('.')] = '_';
    return name;
}

using Corruption = testing::TestWithParam<std::string>;

TEST_P(Corruption, SomeDamage) {
    SKIP_WITHOUT_TABLES();
    check_damage(GetParam(), {{0x01, 0x80, 0xFF}, 200, std::size_t{64} * 61});
}

INSTANTIATE_TEST_SUITE_P(Tables, Corruption, testing::ValuesIn(damaged_files()),
                         corruption_test_name);

} // namespace brindlemoth
