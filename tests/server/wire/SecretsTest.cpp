#include "server/wire/Secrets.h"

#include "support/Wire.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using zan::server::isSecretTag;
using zan::server::maskSecrets;
using zan::server::shownText;

// The same with both separators.
void expectMasked(std::string const& text, std::string const& masked) {
    EXPECT_EQ(maskSecrets(text), masked);
    EXPECT_EQ(maskSecrets(onTheWire(text)), onTheWire(masked));
}

TEST(Secrets, AreTheValuesOfThreeTags) {
    EXPECT_TRUE(isSecretTag(96));
    EXPECT_TRUE(isSecretTag(554));
    EXPECT_TRUE(isSecretTag(925));
    EXPECT_FALSE(isSecretTag(95));
    EXPECT_FALSE(isSecretTag(553));
}

TEST(Secrets, AreMaskedInALogon) {
    expectMasked("8=FIX.4.4|9=70|35=A|553=me|554=open sesame|925=new|95=4|96=data|10=000|",
                 "8=FIX.4.4|9=70|35=A|553=me|554=***|925=***|95=4|96=***|10=000|");
}

TEST(Secrets, AreMaskedAtBothEndsOfAText) {
    expectMasked("554=secret", "554=***");
    expectMasked("554=secret|35=A", "554=***|35=A");
}

TEST(Secrets, AreMaskedWhereAMessageStandsInAnotherText) {
    EXPECT_EQ(maskSecrets("refused: 8=FIX.4.4|35=A|554=secret"), "refused: 8=FIX.4.4|35=A|554=***");
    EXPECT_EQ(maskSecrets("the field (554=secret) is not known"), "the field (554=***");
}

TEST(Secrets, AreMaskedInABeginningOfAMessage) {
    expectMasked("8=FIX.4.4|35=A|95=100|96=the beginning|of it", "8=FIX.4.4|35=A|95=100|96=***");
}

TEST(Secrets, HaveTheLengthThatIsTold) {
    expectMasked("35=A|95=9|96=se|cre|ts|108=30|", "35=A|95=9|96=***|108=30|");
}

TEST(Secrets, HideTheRestWhereTheLengthCannotBeRight) {
    expectMasked("35=A|95=3|96=secret|108=30|", "35=A|95=3|96=***");
    expectMasked("35=A|95=x|96=secret|108=30|", "35=A|95=x|96=***");
}

TEST(Secrets, MayHoldBarsInAMessageOfTheWire) {
    EXPECT_EQ(maskSecrets("35=A\x01"
                          "554=a|b=c|d\x01"
                          "108=30\x01"),
              "35=A\x01"
              "554=***\x01"
              "108=30\x01");
}

TEST(Secrets, AreNotTheDataOfOtherMessages) {
    std::string const text = "8=FIX.4.4|35=B|95=4|96=data|10=000|";
    expectMasked(text, text);
}

TEST(Secrets, AreNotWhatOnlyLooksLikeThem) {
    for (char const* text :
         {"1554=x|", "5540=x|", "55=554|", "x554=y|", "554", "", "=", "a=b", "58=554=x|"}) {
        EXPECT_EQ(maskSecrets(text), text);
    }
}

TEST(ShownText, IsCutWithANoteThatItWas) {
    EXPECT_EQ(shownText("short, 554=secret|"), "short, 554=***|");
    std::string const shown = shownText(std::string(10'000'000, 'x'));
    EXPECT_EQ(shown, std::string(1'000, 'x') + " ... (cut, 10000000 bytes in all)");
    EXPECT_EQ(shownText(std::string(1'000, 'x')), std::string(1'000, 'x'));
}

TEST(ShownText, IsNotCutWithinACharacter) {
    std::string text = std::string(999, 'x') + "\xe2\x82\xac" + std::string(50, 'y');
    EXPECT_EQ(shownText(text), std::string(999, 'x') + " ... (cut, 1052 bytes in all)");
}

} // namespace
