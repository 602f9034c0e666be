#include "server/wire/FieldText.h"

#include "SampleDictionary.h"

#include "support/Wire.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace zan::server;

std::string walked(std::string_view text, Reading reading = Reading::Tolerant) {
    FieldCursor cursor(text, '|', reading);
    std::string fields;
    while (cursor.next()) {
        fields += "(" + std::to_string(cursor.field().tag) + ":" +
                  std::string(cursor.field().value) + ")";
    }
    return fields;
}

std::string refusalOfWalk(std::string_view text) {
    try {
        walked(text, Reading::Strict);
    } catch (MalformedMessage const& e) {
        return e.what();
    }
    return "no error";
}

TEST(FieldText, WalksOverFieldsInTheirOrder) {
    EXPECT_EQ(walked("35=D|55=IBM|11=a=b|"), "(35:D)(55:IBM)(11:a=b)");
}

TEST(FieldText, NeedsNoSeparatorAtTheEnd) {
    EXPECT_EQ(walked("35=D|55=IBM"), "(35:D)(55:IBM)");
}

TEST(FieldText, HasNoFieldsWhenItIsEmpty) {
    EXPECT_EQ(walked(""), "");
}

TEST(FieldText, LetsTheLengthDecideWhereDataEnds) {
    EXPECT_EQ(walked("95=5|96=a|b=c|58=x|", Reading::Strict), "(95:5)(96:a|b=c)(58:x)");
    EXPECT_EQ(walked("93=3|89=||||10=1|", Reading::Strict), "(93:3)(89:|||)(10:1)");
    EXPECT_EQ(walked("95=3|96=a|b", Reading::Strict), "(95:3)(96:a|b)");
}

TEST(FieldText, LetsTheSeparatorDecideWhereTheLengthIsWrong) {
    EXPECT_EQ(walked("95=6|96=ab|58=x|"), "(95:6)(96:ab)(58:x)");
    EXPECT_EQ(walked("95=99999999999999999999|96=ab|58=x|"),
              "(95:99999999999999999999)(96:ab)(58:x)");
    EXPECT_EQ(walked("95=18446744073709551615|96=ab|58=x|"),
              "(95:18446744073709551615)(96:ab)(58:x)");
}

TEST(FieldText, TakesDataWithoutALengthUpToTheSeparator) {
    EXPECT_EQ(walked("96=ab|58=x|", Reading::Strict), "(96:ab)(58:x)");
}

TEST(FieldText, PassesOverWhatIsNoField) {
    EXPECT_EQ(walked("|nonsense||=1|x=2|-3=4|0=5|99999999999=6|58=x|44=|"), "(58:x)(44:)");
}

struct Refusal {
    char const* name;
    char const* text;
    char const* error;
};

class FieldTextRefusal : public testing::TestWithParam<Refusal> {};

TEST_P(FieldTextRefusal, TellsFieldAndReason) {
    EXPECT_EQ(refusalOfWalk(GetParam().text), GetParam().error);
}

INSTANTIATE_TEST_SUITE_P(
    All, FieldTextRefusal,
    testing::Values(
        Refusal{"NoEquals", "35=D|55", "field 2 of the message, \"55\", has no '='"},
        Refusal{"Nothing", "35=D||55=A", "field 2 of the message, \"\", has no '='"},
        Refusal{"NoTag", "35=D|=A",
                "field 2 of the message, \"=A\", has no positive number as its tag"},
        Refusal{"Word", "Side=1",
                "field 1 of the message, \"Side=1\", has no positive number as its tag"},
        Refusal{"Negative", "-35=D",
                "field 1 of the message, \"-35=D\", has no positive number as its tag"},
        Refusal{"Zero", "0=D",
                "field 1 of the message, \"0=D\", has no positive number as its tag"},
        Refusal{"LeadingZero", "035=D",
                "field 1 of the message, \"035=D\", has no positive number as its tag"},
        Refusal{"Huge", "4294967331=D",
                "field 1 of the message, \"4294967331=D\", has no positive number as its tag"},
        Refusal{"Empty", "35=D|55=|44=1", "field 2 of the message, \"55=\", has an empty value"},
        Refusal{"Length", "95=x|96=a",
                "field 1 of the message, \"95=x\", tells a length that is no number"},
        Refusal{"WrongLength", "95=1|96=ab",
                "field 2 of the message, \"96\", does not have the length that the field before "
                "it tells"},
        Refusal{"LongValue", "abcdefghijklmnopqrstuvwxyzabcdefghijklmnopqrstuvwxyz",
                "field 1 of the message, \"abcdefghijklmnopqrstuvwxyzabcdefghijklmn...\", has no "
                "'='"}),
    [](auto const& tested) { return std::string(tested.param.name); });

TEST(FieldText, FindsTheFirstValueOfATag) {
    std::string const message = onTheWire("8=FIX.4.4|35=5|58=go away|58=twice|10=1|");
    EXPECT_EQ(valueOf(message, 58), "go away");
    EXPECT_EQ(valueOf(message, 112), "");
}

TEST(FieldText, PairsLengthsWithTheirData) {
    EXPECT_EQ(lengthTagOf(89), 93);
    EXPECT_EQ(dataTagOf(93), 89);
    EXPECT_EQ(lengthTagOf(355), 354);
    EXPECT_EQ(dataTagOf(618), 619);
    EXPECT_EQ(dataTagOf(58), 0);
    EXPECT_EQ(lengthTagOf(58), 0);
}

} // namespace
