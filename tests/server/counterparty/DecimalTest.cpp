#include "server/counterparty/Decimal.h"

#include <gtest/gtest.h>

namespace {

using zan::server::decimalText;
using zan::server::parseDecimal;

class DecimalTexts : public testing::TestWithParam<std::pair<char const*, char const*>> {};

TEST_P(DecimalTexts, AreReadAndPrintedShort) {
    auto const [text, shortest] = GetParam();
    ASSERT_TRUE(parseDecimal(text).has_value()) << text;
    EXPECT_EQ(decimalText(*parseDecimal(text)), shortest);
}

INSTANTIATE_TEST_SUITE_P(Numbers, DecimalTexts,
                         testing::Values(std::pair{"0", "0"}, std::pair{"100", "100"},
                                         std::pair{"007", "7"}, std::pair{"12.50", "12.5"},
                                         std::pair{"0.000001", "0.000001"}, std::pair{"5.", "5"},
                                         std::pair{"-1.25", "-1.25"}, std::pair{"-0.5", "-0.5"},
                                         std::pair{"1.2500000000", "1.25"},
                                         std::pair{"999999999999.999999", "999999999999.999999"}));

TEST(Decimal, RefusesWhatIsNoNumberOrDoesNotFit) {
    for (char const* text : {"", "-", ".", ".5", "x", "1x", "1.2.3", "1e5", "+1", " 1", "--1",
                             "0.0000001", "1000000000000"})
        EXPECT_FALSE(parseDecimal(text).has_value()) << text;
}

} // namespace
