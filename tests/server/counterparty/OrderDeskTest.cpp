#include "server/counterparty/OrderDesk.h"

#include "support/Wire.h"

#include <gtest/gtest.h>

namespace {

using zan::server::DeskReply;
using zan::server::FixField;
using zan::server::OrderDesk;

// A message as it came over the wire, out of its type and body; `|` becomes SOH.
std::string message(std::string const& type, std::string const& body) {
    return onTheWire("8=FIX.4.4|9=1|35=" + type + "|34=5|49=US|56=THEM|" + body + "10=000|");
}

// `type|tag=value|...|` of a reply.
std::string textOf(DeskReply const& reply) {
    std::string text = reply.type + "|";
    for (FixField const& field : reply.body)
        text += std::to_string(field.tag) + "=" + field.value + "|";
    return text;
}

std::string value(DeskReply const& reply, int tag) {
    for (FixField const& field : reply.body)
        if (field.tag == tag)
            return field.value;
    return "none";
}

std::string values(DeskReply const& reply, std::initializer_list<int> tags) {
    std::string text;
    for (int const tag : tags)
        text += value(reply, tag) + " ";
    return text;
}

std::string const order = "11=A|55=IBM|54=1|38=101|40=2|44=12.5|";

TEST(OrderDesk, AcknowledgesAnOrderAndFillsItInTwoParts) {
    OrderDesk desk("FIX.4.4");
    auto const replies = desk.handle(message("D", order));
    ASSERT_EQ(replies.size(), 3u);
    // ExecType, OrdStatus, LastQty, LastPx, CumQty, LeavesQty, AvgPx
    EXPECT_EQ(values(replies[0], {150, 39, 32, 31, 14, 151, 6}), "0 0 none none 0 101 0 ");
    EXPECT_EQ(values(replies[1], {150, 39, 32, 31, 14, 151, 6}), "F 1 50 12.5 50 51 12.5 ");
    EXPECT_EQ(values(replies[2], {150, 39, 32, 31, 14, 151, 6}), "F 2 51 12.5 101 0 12.5 ");
}

TEST(OrderDesk, GivesAnOrderOneIdAndEachReportItsOwn) {
    OrderDesk desk("FIX.4.4");
    auto const replies = desk.handle(message("D", order));
    ASSERT_EQ(replies.size(), 3u);
    EXPECT_EQ(values(replies[0], {37, 11}), values(replies[2], {37, 11}));
    EXPECT_NE(value(replies[0], 17), value(replies[1], 17));
    EXPECT_NE(value(replies[1], 17), value(replies[2], 17));
}

TEST(OrderDesk, SpeaksTheExecutionTypesOfFix42) {
    OrderDesk desk("FIX.4.2");
    auto const replies = desk.handle(message("D", order));
    ASSERT_EQ(replies.size(), 3u);
    EXPECT_EQ(values(replies[0], {20, 150, 39}), "0 0 0 ");
    EXPECT_EQ(values(replies[1], {20, 150, 39}), "0 1 1 ");
    EXPECT_EQ(values(replies[2], {20, 150, 39}), "0 2 2 ");
}

TEST(OrderDesk, RepeatsTheGroupsOfTheOrderInTheirOrder) {
    OrderDesk desk("FIX.4.4");
    std::string const parties =
        "453=2|448=X|447=D|452=1|802=2|523=p|803=1|523=q|803=2|448=Y|447=D|452=3|";
    for (DeskReply const& reply : desk.handle(message("D", parties + order)))
        EXPECT_NE(textOf(reply).find("|" + parties + "55=IBM|"), std::string::npos)
            << textOf(reply);
}

TEST(OrderDesk, FillsAMarketOrderAtHundred) {
    OrderDesk desk("FIX.4.4");
    auto const replies = desk.handle(message("D", "11=A|55=IBM|54=1|38=10|40=1|"));
    ASSERT_EQ(replies.size(), 3u);
    EXPECT_EQ(value(replies[2], 6), "100");
}

TEST(OrderDesk, FillsAQuantityWithoutTwoWholePartsInOne) {
    OrderDesk desk("FIX.4.4");
    auto const replies = desk.handle(message("D", "11=A|55=IBM|54=1|38=1.5|40=1|"));
    ASSERT_EQ(replies.size(), 2u);
    EXPECT_EQ(values(replies[1], {39, 32, 151}), "2 1.5 0 ");
}

TEST(OrderDesk, LetsAnOrderBelowOneRestAndCancelsIt) {
    OrderDesk desk("FIX.4.4");
    auto const placed = desk.handle(message("D", "11=A|55=IBM|54=1|38=10|40=1|44=0.5|"));
    ASSERT_EQ(placed.size(), 1u);
    EXPECT_EQ(values(placed[0], {39, 151}), "0 10 ");
    auto const cancelled = desk.handle(message("F", "11=B|41=A|55=IBM|54=1|"));
    ASSERT_EQ(cancelled.size(), 1u);
    EXPECT_EQ(cancelled[0].type, "8");
    EXPECT_EQ(values(cancelled[0], {11, 41, 150, 39, 14, 151}), "B A 4 4 0 0 ");
    EXPECT_EQ(value(cancelled[0], 37), value(placed[0], 37));
}

struct CancelCase {
    char const* name;
    char const* original;
    char const* expected; // OrdStatus, CxlRejReason, CxlRejResponseTo
    char const* text;
};

class RefusedCancels : public testing::TestWithParam<CancelCase> {};

TEST_P(RefusedCancels, SayWhy) {
    OrderDesk desk("FIX.4.4");
    desk.handle(message("D", order));
    desk.handle(message("D", "11=REST|55=IBM|54=1|38=10|40=1|44=0.5|"));
    desk.handle(message("F", "11=C|41=REST|"));
    auto const replies =
        desk.handle(message("F", "11=Z|41=" + std::string(GetParam().original) + "|"));
    ASSERT_EQ(replies.size(), 1u);
    EXPECT_EQ(replies[0].type, "9");
    EXPECT_EQ(values(replies[0], {11, 41}), "Z " + std::string(GetParam().original) + " ");
    EXPECT_EQ(values(replies[0], {39, 102, 434}), GetParam().expected);
    EXPECT_NE(value(replies[0], 58).find(GetParam().text), std::string::npos);
}

INSTANTIATE_TEST_SUITE_P(
    Cancels, RefusedCancels,
    testing::Values(CancelCase{"Unknown", "NEVER", "8 1 1 ", "the order NEVER is not known"},
                    CancelCase{"Filled", "A", "2 0 1 ", "nothing is left"},
                    CancelCase{"Cancelled", "REST", "4 0 1 ", "nothing is left"},
                    CancelCase{"CancelledByItsNewId", "C", "4 0 1 ", "nothing is left"}),
    [](auto const& tested) { return tested.param.name; });

struct NonsenseCase {
    char const* name;
    char const* body;
    char const* text;
};

class NonsenseOrders : public testing::TestWithParam<NonsenseCase> {};

TEST_P(NonsenseOrders, AreRejectedWithTheReason) {
    OrderDesk desk("FIX.4.4");
    desk.handle(message("D", "11=USED|55=IBM|54=1|38=10|40=1|"));
    auto const replies = desk.handle(message("D", GetParam().body));
    ASSERT_EQ(replies.size(), 1u);
    EXPECT_EQ(replies[0].type, "8");
    EXPECT_EQ(values(replies[0], {37, 150, 39, 14, 151}), "NONE 8 8 0 0 ");
    EXPECT_NE(value(replies[0], 58).find(GetParam().text), std::string::npos)
        << value(replies[0], 58);
}

INSTANTIATE_TEST_SUITE_P(
    Orders, NonsenseOrders,
    testing::Values(
        NonsenseCase{"NoId", "55=IBM|54=1|38=10|40=1|", "ClOrdID (11) is missing"},
        NonsenseCase{"NoSymbol", "11=N|54=1|38=10|40=1|", "Symbol (55) is missing"},
        NonsenseCase{"NoSide", "11=N|55=IBM|38=10|40=1|", "Side (54) is missing"},
        NonsenseCase{"NoQuantity", "11=N|55=IBM|54=1|40=1|", "OrderQty (38) is missing"},
        NonsenseCase{"NoType", "11=N|55=IBM|54=1|38=10|", "OrdType (40) is missing"},
        NonsenseCase{"NegativeQuantity", "11=N|55=IBM|54=1|38=-1|40=1|", "OrderQty (38) -1"},
        NonsenseCase{"NoNumber", "11=N|55=IBM|54=1|38=ten|40=1|", "OrderQty (38) ten"},
        NonsenseCase{"NoLimit", "11=N|55=IBM|54=1|38=10|40=2|", "Price (44) is missing"},
        NonsenseCase{"ZeroLimit", "11=N|55=IBM|54=1|38=10|40=2|44=0|", "Price (44) 0 is no price"},
        NonsenseCase{"UsedId", "11=USED|55=IBM|54=1|38=10|40=1|", "USED was used before"}),
    [](auto const& tested) { return tested.param.name; });

TEST(OrderDesk, RefusesOtherMessagesByABusinessReject) {
    OrderDesk desk("FIX.4.4");
    auto const replies = desk.handle(message("B", "148=News|"));
    ASSERT_EQ(replies.size(), 1u);
    EXPECT_EQ(replies[0].type, "j");
    EXPECT_EQ(values(replies[0], {45, 372, 380}), "5 B 3 ");
}

TEST(OrderDesk, DoesNotAnswerABusinessReject) {
    OrderDesk desk("FIX.4.4");
    EXPECT_TRUE(desk.handle(message("j", "45=1|372=8|380=3|")).empty());
}

TEST(OrderDesk, GivesNoIdTwiceThatAnEarlierDeskHasGiven) {
    OrderDesk desk("FIX.4.4");
    desk.goOnBehind(message("8", "37=O-41|17=E-99|39=0|"));
    desk.goOnBehind(message("8", "37=O-7|17=E-8|39=0|"));
    desk.goOnBehind(message("8", "37=NONE|17=X|39=8|"));
    auto const replies = desk.handle(message("D", order));
    ASSERT_FALSE(replies.empty());
    EXPECT_EQ(values(replies.front(), {37, 17}), "O-42 E-100 ");
}

} // namespace
