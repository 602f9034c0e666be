#include "apps/zan/FixLine.h"
#include "apps/zan/MessageView.h"
#include "apps/zan/Names.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

using namespace zan::cli;

std::string piped(std::string text) {
    std::ranges::replace(text, '\x01', '|');
    return text;
}

std::string soh(std::string text) {
    std::ranges::replace(text, '|', '\x01');
    return text;
}

std::string const heartbeat = "8=FIX.4.4|9=5|35=0|10=163|";

TEST(FixLine, FindsTheMessageWhateverStandsAroundIt) {
    EXPECT_EQ(piped(messageIn(heartbeat)), heartbeat);
    EXPECT_EQ(piped(messageIn("20261121-09:30:00.000 : " + heartbeat + " (in)")), heartbeat);
    EXPECT_EQ(piped(messageIn(soh(heartbeat))), heartbeat);
    EXPECT_EQ(piped(messageIn("8=FIX.4.4^A9=5^A35=0^A10=163^A")), heartbeat);
}

TEST(FixLine, TakesAPipeForPartOfAValueBehindSoh) {
    EXPECT_EQ(messageIn("8=FIX.4.4\x01"
                        "58=a|b\x01"),
              "8=FIX.4.4\x01"
              "58=a|b\x01");
}

TEST(FixLine, TakesFieldsAlone) {
    EXPECT_EQ(piped(messageIn("35=D|11=A|55=IBM")), "35=D|11=A|55=IBM|");
    EXPECT_EQ(messageIn("no message here"), "");
    EXPECT_EQ(messageIn(""), "");
}

TEST(FixLine, FindsNoFaultInASoundFrame) {
    EXPECT_TRUE(frameFaults(soh(heartbeat)).empty());
    EXPECT_TRUE(frameFaults(soh("35=D|11=A|")).empty());
}

TEST(FixLine, TellsWhichLengthAndChecksumWouldBeRight) {
    EXPECT_EQ(frameFaults(soh("8=FIX.4.4|9=6|35=0|10=164|")),
              std::vector<std::string>{"BodyLength (9) is 6; 5 would be right"});
    EXPECT_EQ(frameFaults(soh("8=FIX.4.4|9=5|35=0|10=100|")),
              std::vector<std::string>{"CheckSum (10) is 100; 163 would be right"});
    EXPECT_EQ(frameFaults(soh("8=FIX.4.4|9=5|35=0|10=99|")),
              std::vector<std::string>{"CheckSum (10) is 99; 163 would be right"});
}

TEST(FixLine, MissesLengthAndChecksum) {
    EXPECT_EQ(frameFaults(soh("8=FIX.4.4|35=0|")),
              (std::vector<std::string>{"BodyLength (9) is missing; it would be right as the "
                                        "second field",
                                        "CheckSum (10) is missing"}));
    EXPECT_EQ(frameFaults("8=FIX.4.4").size(), 2U);
    EXPECT_EQ(frameFaults(soh("8=FIX.4.4|9=5")).size(), 2U);
}

std::string view(std::string const& message, std::string const& dictionary = "") {
    Names names(dictionary);
    return viewText(soh(message), names, false);
}

TEST(MessageView, NamesTagsValuesAndTypes) {
    EXPECT_EQ(view("8=FIX.4.4|35=D|54=1|40=2|99999=x|"), "NewOrderSingle (D, FIX.4.4)\n"
                                                         "  8     BeginString = FIX.4.4\n"
                                                         "  35    MsgType = D (NewOrderSingle)\n"
                                                         "  54    Side = 1 (Buy)\n"
                                                         "  40    OrdType = 2 (Limit)\n"
                                                         "  99999 ? = x\n");
}

TEST(MessageView, IndentsGroupsAndTheGroupsInThem) {
    EXPECT_EQ(view("35=D|453=2|448=A|447=D|802=1|523=S|448=B|55=IBM|"),
              "NewOrderSingle (D, )\n"
              "  35    MsgType = D (NewOrderSingle)\n"
              "  453   NoPartyIDs = 2\n"
              "  - 448   PartyID = A\n"
              "    447   PartyIDSource = D (Proprietary)\n"
              "    802   NoPartySubIDs = 1\n"
              "    - 523   PartySubID = S\n"
              "  - 448   PartyID = B\n"
              "  55    Symbol = IBM\n");
}

TEST(MessageView, KnowsTheNamesOfOlderVersions) {
    EXPECT_NE(view("8=FIX.4.2|35=8|20=0|").find("ExecTransType = 0 (New)"), std::string::npos);
}

TEST(Names, FindTagsByNumberAndByNameInAnyCase) {
    Names names("");
    EXPECT_EQ(names.tagOf("55"), 55);
    EXPECT_EQ(names.tagOf("symbol"), 55);
    EXPECT_EQ(names.tagOf("ClOrdID"), 11);
    EXPECT_EQ(names.tagOf("NoSuchTag"), 0);
    EXPECT_EQ(names.tagOf("-5"), 0);
}

} // namespace
