// All single-byte changes of the head, many elsewhere, every truncation.

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

TEST_P(Corruption, AllDamage) {
    SKIP_WITHOUT_TABLES();
    std::vector<std::uint8_t> all;
    for (unsigned flip = 1; flip < 256; ++flip)
        all.push_back(static_cast<std::uint8_t>(flip));
    check_damage(GetParam(), {all, 5000, 64});
}

INSTANTIATE_TEST_SUITE_P(Tables, Corruption, testing::ValuesIn(damaged_files()),
                         corruption_test_name);

} // namespace brindlemoth
