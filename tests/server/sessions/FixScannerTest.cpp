#include "server/sessions/FixScanner.h"

#include "support/Wire.h"

#include <gtest/gtest.h>

namespace {

using zan::server::FieldFault;
using zan::server::FixScanner;
using zan::server::fixValue;

// The fields as `tag:value;`, with the fault and the tag where they are none.
std::string scan(std::string const& message) {
    char const* const faults[] = {"", "no tag", "no value", "wrong length"};
    std::string found;
    FixScanner scanner(message);
    while (scanner.next())
        if (scanner.fault() == FieldFault::none)
            found += std::to_string(scanner.tag()) + ":" + scanner.value() + ";";
        else
            found += std::string(faults[static_cast<int>(scanner.fault())]) + " " +
                     (scanner.tag() == FixScanner::noNumber ? "?" : std::to_string(scanner.tag())) +
                     ";";
    return found;
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

struct Malformed {
    char const* text;
    char const* found;
};

class MalformedText : public testing::TestWithParam<Malformed> {};

TEST_P(MalformedText, IsToldAndPassedOver) {
    EXPECT_EQ(scan(onTheWire("35=D|" + std::string(GetParam().text) + "58=x|")),
              "35:D;" + std::string(GetParam().found) + ";58:x;");
}

INSTANTIATE_TEST_SUITE_P(
    Fields, MalformedText,
    testing::Values(Malformed{"55|", "no tag ?"}, Malformed{"=x|", "no tag ?"},
                    Malformed{"x=1|", "no tag ?"}, Malformed{"-1=x|", "no tag -1"},
                    Malformed{"0=x|", "no tag 0"}, Malformed{"055=x|", "no tag 55"},
                    Malformed{"55=|", "no value 55"}, Malformed{"5 5=x|", "no tag ?"},
                    Malformed{"99999999999=x|", "no tag ?"}, Malformed{"4294967351=x|", "no tag ?"},
                    Malformed{"|", "no tag ?"}, Malformed{"95=0|96=|", "95:0;no value 96"}));

TEST(FixScanner, TellsAFieldThatDoesNotEnd) {
    EXPECT_EQ(scan(onTheWire("35=D|55=x")), "35:D;no tag 55;");
    EXPECT_EQ(scan(onTheWire("35=D|55")), "35:D;no tag ?;");
}

TEST(FixScanner, KnowsTheDataFieldsOfTheNewestVersions) {
    EXPECT_EQ(scan(onTheWire("1397=3|1398=a|b|58=x|")), onTheWire("1397:3;1398:a|b;58:x;"));
    EXPECT_EQ(scan(onTheWire("43109=3|42684=a|b|58=x|")), onTheWire("43109:3;42684:a|b;58:x;"));
}

TEST(FixScanner, DoesNotTrustALengthBeyondTheMessage) {
    EXPECT_EQ(scan(onTheWire("95=999|96=ab|58=x|")), "95:999;96:ab;58:x;");
}

TEST(FixScanner, RefusesDataThatIsLongerThanItsLength) {
    EXPECT_EQ(scan(onTheWire("95=1|96=ab|58=x|")), "95:1;wrong length 96;58:x;");
}

TEST(FixScanner, FindsTheFirstValueOfATag) {
    EXPECT_EQ(fixValue(onTheWire("35=D|55=A|55=B|"), 55), "A");
    EXPECT_EQ(fixValue(onTheWire("35=D|55=A|"), 56), "");
}

} // namespace
