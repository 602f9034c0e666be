#include "comfort/FieldReader.h"

#include "comfort/MessageBuilder.h"
#include "comfort/Tags.h"
#include "events/ZANAppMessageEvent.h"
#include "events/ZANConnectionStateEvent.h"

#include <gtest/gtest.h>

#include <string>

namespace {

namespace tag = zan::tag;

// As it comes in: every value is text.
counted_ptr<ZANMessage> incoming(std::initializer_list<std::pair<int, char const*>> fields) {
    zan::MessageBuilder message(zan::MsgType::ExecutionReport);
    for (auto const& [number, text] : fields) {
        message.set(number, text);
    }
    return message;
}

TEST(FieldReader, ReadsEachTypeFromText) {
    zan::FieldReader const report(incoming({{11, "order-1"},
                                            {54, "2"},
                                            {14, "50.5"},
                                            {34, "7"},
                                            {97, "Y"},
                                            {13, "3"},
                                            {103, "99"},
                                            {60, "20261121-09:30:00.123"}}));
    EXPECT_EQ(report.get(tag::ClOrdID), "order-1");
    EXPECT_EQ(report.get(tag::Side), zan::Side::Sell);
    EXPECT_EQ(report.get(tag::CumQty), 50.5);
    EXPECT_EQ(report.get(tag::MsgSeqNum), 7);
    EXPECT_EQ(report.get(tag::PossResend), true);
    EXPECT_EQ(report.get(tag::CommType), '3');
    EXPECT_EQ(report.get(tag::OrdRejReason), zan::OrdRejReason::Other);
    EXPECT_EQ(report.at(tag::TransactTime).toString(), "20261121-09:30:00.123");
    EXPECT_TRUE(report.is(zan::MsgType::ExecutionReport));
}

TEST(FieldReader, ReadsWhatABuilderHasSet) {
    zan::FieldReader const order(
        zan::MessageBuilder("D").set(tag::Side, zan::Side::Buy).set(tag::Price, 95.5).build());
    EXPECT_EQ(order.get(tag::Side), zan::Side::Buy);
    EXPECT_EQ(order.get(tag::Price), 95.5);
}

TEST(FieldReader, FindsNothingWhereAFieldIsAbsent) {
    zan::FieldReader const report(incoming({}));
    EXPECT_FALSE(report.has(tag::LeavesQty));
    EXPECT_EQ(report.get(tag::LeavesQty), std::nullopt);
    EXPECT_EQ(report.get(tag::LeavesQty, 100), 100.0);
    EXPECT_EQ(report.get(tag::Text, "none"), "none");
    EXPECT_NE(report.get(tag::OrdStatus), zan::OrdStatus::Filled);
    EXPECT_TRUE(report.group(tag::NoPartyIDs).empty());
}

TEST(FieldReader, FindsNothingWhereAValueDoesNotStandForOne) {
    zan::FieldReader const report(incoming({{151, "many"},
                                            {34, "1.5"},
                                            {39, "22"},
                                            {97, "perhaps"},
                                            {103, "9999999999"},
                                            {60, "yesterday"}}));
    EXPECT_TRUE(report.has(tag::LeavesQty));
    EXPECT_EQ(report.get(tag::LeavesQty), std::nullopt);
    EXPECT_EQ(report.get(tag::MsgSeqNum), std::nullopt);
    EXPECT_EQ(report.get(tag::OrdStatus), std::nullopt);
    EXPECT_EQ(report.get(tag::PossResend), std::nullopt);
    EXPECT_EQ(report.get(tag::OrdRejReason), std::nullopt);
    EXPECT_EQ(report.get(tag::TransactTime), std::nullopt);
}

TEST(FieldReader, GivesNoDefaultForAValueThatIsThere) {
    zan::FieldReader const report(incoming({{151, "many"}, {39, "22"}}));
    EXPECT_THROW(static_cast<void>(report.get(tag::LeavesQty, 0)), InfraException);
    EXPECT_THROW(static_cast<void>(report.get(tag::OrdStatus, zan::OrdStatus::New)),
                 InfraException);
    EXPECT_EQ(report.get(tag::CumQty, 7), 7.0);
}

TEST(FieldReader, TellsTheTagOfAFieldThatHasToBeThere) {
    zan::FieldReader const report(incoming({{151, "many"}, {14, "50"}}));
    EXPECT_EQ(report.at(tag::CumQty), 50.0);
    for (auto const wanted : {tag::LeavesQty, tag::AvgPx}) {
        try {
            static_cast<void>(report.at(wanted));
            ADD_FAILURE() << "no exception for tag " << wanted.number;
        } catch (InfraException const& e) {
            EXPECT_NE(std::string(e.what()).find("tag " + std::to_string(wanted.number)),
                      std::string::npos)
                << e.what();
        }
    }
}

TEST(FieldReader, GivesTheTextOfAnyField) {
    zan::FieldReader const report(incoming({{39, "22"}, {151, "100"}}));
    EXPECT_EQ(report.text(tag::OrdStatus), "22");
    EXPECT_EQ(report.text(tag::LeavesQty), "100");
    EXPECT_EQ(report.text(tag::AvgPx), "");
    EXPECT_EQ(zan::FieldReader(ZANMessage()).text(35), "");
}

TEST(FieldReader, KeepsAValueWithoutAName) {
    zan::FieldReader const report(incoming({{39, "Z"}}));
    EXPECT_EQ(report.get(tag::OrdStatus), zan::OrdStatus{'Z'});
}

TEST(FieldReader, DropsDigitsBeyondTheMilliseconds) {
    zan::FieldReader const report(incoming({{60, "20261121-09:30:00.123456789"}}));
    EXPECT_EQ(report.at(tag::TransactTime).toString(), "20261121-09:30:00.123");
    zan::FieldReader const wrong(incoming({{60, "20261121-09:30:00.123456Z"}}));
    EXPECT_EQ(wrong.get(tag::TransactTime), std::nullopt);
}

TEST(FieldReader, GivesTheInstancesOfAGroup) {
    zan::MessageBuilder order("D");
    order.add(zan::GroupBuilder(tag::NoPartyIDs).set(tag::PartyID, "DESK-7"))
        .add(zan::GroupBuilder(tag::NoPartyIDs).set(tag::PartyID, "BANK"));
    std::string ids;
    for (zan::FieldReader const& party : zan::FieldReader(order.build()).group(tag::NoPartyIDs)) {
        ids += party.get(tag::PartyID, "?") + ";";
    }
    EXPECT_EQ(ids, "DESK-7;BANK;");
}

TEST(FieldReader, FindsNothingInWhatHasNoFields) {
    ZANConnectionStateEvent const state("BROKER",
                                        counted_ptr<ZANConnectionState>(new ZANConnectionState));
    for (zan::FieldReader const& empty : {zan::FieldReader(state), zan::FieldReader(ZANMessage()),
                                          zan::FieldReader(counted_ptr<ZANMessage>()),
                                          zan::FieldReader(counted_ptr<ZANFieldGroup>())}) {
        EXPECT_FALSE(empty.has(35));
        EXPECT_EQ(empty.get(tag::Symbol), std::nullopt);
        EXPECT_TRUE(empty.group(tag::NoPartyIDs).empty());
        EXPECT_EQ(empty.type(), "");
        EXPECT_EQ(empty.messageId(), 0);
        EXPECT_THROW(static_cast<void>(empty.at(tag::Symbol)), InfraException);
    }
}

TEST(FieldReader, OutlivesTheEvent) {
    auto event = std::make_unique<ZANAppMessageEvent>("BROKER", incoming({{16580, "12"}}));
    zan::FieldReader const report(*event);
    event.reset();
    EXPECT_EQ(report.messageId(), 12);
}

} // namespace
