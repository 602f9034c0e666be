#include "server/sessions/FixScanner.h"

#include "support/Wire.h"

#include <gtest/gtest.h>

namespace {

using zan::server::FixScanner;
using zan::server::fixValue;

// The fields as `tag:value;`, with `!` where the bytes are no field.
std::string scan(std::string const& message) {
    std::string found;
    FixScanner scanner(message);
    while (scanner.next())
        found += std::to_string(scanner.tag()) + ":" + scanner.value() + ";";
    return scanner.malformed() ? found + "!" : found;
}

TEST(FixScanner, WalksOverTheFieldsInTheirOrder) {
    EXPECT_EQ(scan(onTheWire("35=D|55=IBM|11=a=b|55=X|")), "35:D;55:IBM;11:a=b;55:X;");
}

TEST(FixScanner, TakesDataByItsLength) {
    EXPECT_EQ(scan(onTheWire("95=7|96=a|b=c|d|58=x|")), onTheWire("95:7;96:a|b=c|d;58:x;"));
    EXPECT_EQ(scan(onTheWire("93=3|89=a|b|10=1|")), onTheWire("93:3;89:a|b;10:1;"));
}

TEST(FixScanner, IgnoresALengthThatNoDataFollows) {
    EXPECT_EQ(scan(onTheWire("95=3|58=abc|96=x|")), "95:3;58:abc;96:x;");
}

class MalformedText : public testing::TestWithParam<std::string> {};

TEST_P(MalformedText, EndsTheWalk) {
    EXPECT_EQ(scan(onTheWire("35=D|" + GetParam())), "35:D;!");
}

INSTANTIATE_TEST_SUITE_P(Fields, MalformedText,
                         testing::Values("55|", "=x|", "x=1|", "-1=x|", "0=x|", "055=x|", "55=|",
                                         "55=x", "99999999999=x|", "|", "55"));

TEST(FixScanner, DoesNotTrustALengthBeyondTheMessage) {
    EXPECT_EQ(scan(onTheWire("95=999|96=ab|58=x|")), "95:999;96:ab;58:x;");
}

TEST(FixScanner, RefusesDataThatIsLongerThanItsLength) {
    EXPECT_EQ(scan(onTheWire("95=1|96=ab|58=x|")), "95:1;!");
}

TEST(FixScanner, FindsTheFirstValueOfATag) {
    EXPECT_EQ(fixValue(onTheWire("35=D|55=A|55=B|"), 55), "A");
    EXPECT_EQ(fixValue(onTheWire("35=D|55=A|"), 56), "");
}

} // namespace
