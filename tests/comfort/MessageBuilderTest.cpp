#include "comfort/MessageBuilder.h"

#include "comfort/Tags.h"
#include "infra/InfraException.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>
#include <string_view>

namespace {

namespace tag = zan::tag;

std::string textOf(zan::MessageBuilder const& built, int number) {
    auto const field = built.fields().getField(number);
    return field ? field->getValue().asString() : "absent";
}

template <class T, class V>
constexpr bool goes(zan::Tag<T>, V const&) {
    return zan::FieldType<T>::template takes<V>;
}

TEST(MessageBuilder, SetsTheTypeOfTheMessage) {
    EXPECT_EQ(textOf(zan::MessageBuilder(zan::MsgType::NewOrderSingle), 35), "D");
    EXPECT_EQ(textOf(zan::MessageBuilder("U7"), 35), "U7");
}

TEST(MessageBuilder, SetsEachTypeOfValueAsItGoesOut) {
    zan::MessageBuilder order(zan::MsgType::NewOrderSingle);
    order.set(tag::ClOrdID, "order-1")
        .set(tag::Symbol, std::string("IBM"))
        .set(tag::Account, std::string_view("A-1"))
        .set(tag::Side, zan::Side::Buy)
        .set(tag::OrderQty, 100)
        .set(tag::Price, 95.5)
        .set(tag::PossResend, true)
        .set(tag::CommType, '3')
        .set(tag::OrdRejReason, zan::OrdRejReason::Other)
        .set(tag::TransactTime, infra::Time(0))
        .set(tag::SecurityType, zan::SecurityType::CommonStock);
    EXPECT_EQ(textOf(order, 11), "order-1");
    EXPECT_EQ(textOf(order, 55), "IBM");
    EXPECT_EQ(textOf(order, 1), "A-1");
    EXPECT_EQ(textOf(order, 54), "1");
    EXPECT_EQ(textOf(order, 38), "100");
    EXPECT_EQ(textOf(order, 44), "95.5");
    EXPECT_EQ(textOf(order, 97), "Y");
    EXPECT_EQ(textOf(order, 13), "3");
    EXPECT_EQ(textOf(order, 103), "99");
    EXPECT_EQ(textOf(order, 60), "19700101-00:00:00.000");
    EXPECT_EQ(textOf(order, 167), "CS");
}

TEST(MessageBuilder, TakesOnlyValuesThatGoWithTheTag) {
    static_assert(goes(tag::Price, 1) && goes(tag::Price, 1.0F) && goes(tag::Price, 1ULL));
    static_assert(!goes(tag::Price, "1") && !goes(tag::Price, '1') && !goes(tag::Price, true));
    static_assert(goes(tag::MsgSeqNum, 1U) && !goes(tag::MsgSeqNum, 1.0));
    static_assert(goes(tag::Symbol, "IBM") && !goes(tag::Symbol, 1) && !goes(tag::Symbol, nullptr));
    static_assert(!goes(tag::Symbol, L"IBM") && !goes(tag::Symbol, 'I'));
    static_assert(goes(tag::Side, zan::Side::Buy) && !goes(tag::Side, zan::OrdType::Market));
    static_assert(!goes(tag::Side, '1') && !goes(tag::Side, "1"));
    static_assert(goes(tag::PossResend, true) && !goes(tag::PossResend, "Y"));
    static_assert(!goes(tag::TransactTime, "20261121") && !goes(tag::TransactTime, 20261121));
}

TEST(MessageBuilder, TakesAValueWithoutAName) {
    zan::MessageBuilder order("D");
    order.set(tag::Side, zan::Side{'Z'}).set(tag::PartyRole, zan::PartyRole{76});
    EXPECT_EQ(textOf(order, 54), "Z");
    EXPECT_EQ(textOf(order, 452), "76");
}

TEST(MessageBuilder, KeepsAllDigitsOfAWholeNumber) {
    zan::MessageBuilder order("D");
    order.set(tag::OrderQty, std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(textOf(order, 38), "-9223372036854775808");
    order.set(tag::MinQty, std::numeric_limits<std::uint64_t>::max());
    EXPECT_EQ(textOf(order, 110), "18446744073709551615");
}

TEST(MessageBuilder, SetsDecimalPlacesThatACounterpartyWants) {
    zan::MessageBuilder order("D");
    EXPECT_EQ(textOf(order.set(tag::Price, zan::Decimal(95.5, 2)), 44), "95.50");
    EXPECT_EQ(textOf(order.set(tag::Price, zan::Decimal(0.1 + 0.2, 1)), 44), "0.3");
    EXPECT_EQ(textOf(order.set(tag::Price, zan::Decimal(1e22, 0)), 44), "10000000000000000000000");
    EXPECT_EQ(textOf(order.set(tag::Price, zan::Decimal("95.500")), 44), "95.500");
}

TEST(Decimal, RefusesWhatIsNoDecimalNumber) {
    EXPECT_THROW(zan::Decimal("IBM"), InfraException);
    EXPECT_THROW(zan::Decimal(""), InfraException);
    EXPECT_THROW(zan::Decimal("1e5"), InfraException);
    EXPECT_THROW(zan::Decimal(1.0, -1), InfraException);
    EXPECT_THROW(zan::Decimal(1.0, 16), InfraException);
    EXPECT_THROW(zan::Decimal(std::numeric_limits<double>::infinity(), 2), InfraException);
    EXPECT_THROW(zan::Decimal(std::numeric_limits<double>::quiet_NaN(), 2), InfraException);
    EXPECT_EQ(zan::Decimal(-std::numeric_limits<double>::max(), 15).text().size(), 326U);
}

TEST(MessageBuilder, RefusesTextThatIsNotThere) {
    char const* const nothing = nullptr;
    zan::MessageBuilder order("D");
    EXPECT_THROW(order.set(tag::Symbol, nothing), InfraException);
}

TEST(MessageBuilder, SetsTagsByNumberToo) {
    constexpr zan::Tag<double> markup{5001};
    zan::MessageBuilder order("D");
    order.set(5000, "free text").set(markup, 0.25).set(60, "20261121-09:30:00.123456");
    EXPECT_EQ(textOf(order, 5000), "free text");
    EXPECT_EQ(textOf(order, 5001), "0.25");
    EXPECT_EQ(textOf(order, 60), "20261121-09:30:00.123456");
    EXPECT_EQ(textOf(order.remove(5000), 5000), "absent");
}

TEST(MessageBuilder, AddsInstancesOfGroupsWithGroupsInThem) {
    zan::GroupBuilder trader(tag::NoPartyIDs);
    trader.set(tag::PartyID, "DESK-7").set(tag::PartyRole, zan::PartyRole::EnteringTrader);
    trader.add(zan::GroupBuilder(tag::NoPartySubIDs).set(tag::PartySubID, "floor 2"));
    zan::MessageBuilder order("D");
    order.add(trader).add(zan::GroupBuilder(tag::NoPartyIDs).set(tag::PartyID, "BANK"));
    trader.set(tag::PartyID, "changed later");

    ASSERT_EQ(order.fields().getGroupCount(tag::NoPartyIDs), 2);
    auto const first = order.fields().getGroup(tag::NoPartyIDs, 0);
    EXPECT_EQ(first->getField(448)->getValue().asString(), "DESK-7");
    EXPECT_EQ(first->getGroup(802, 0)->getField(523)->getValue().asString(), "floor 2");
    auto const second = order.fields().getGroup(tag::NoPartyIDs, 1);
    EXPECT_EQ(second->getField(448)->getValue().asString(), "BANK");
}

TEST(MessageBuilder, BuildsAMessageOfItsOwnEachTime) {
    zan::MessageBuilder order("D");
    order.set(tag::ClOrdID, "order-1");
    counted_ptr<ZANMessage> const first = order;
    counted_ptr<ZANMessage> const second = order.set(tag::ClOrdID, "order-2").build();
    EXPECT_EQ(first->getFieldGroup()->getField(11)->getValue().asString(), "order-1");
    EXPECT_EQ(second->getFieldGroup()->getField(11)->getValue().asString(), "order-2");
    EXPECT_EQ(first.use_count(), 1U);
    EXPECT_EQ(first->getFieldGroup().use_count(), 2U);
}

TEST(MessageBuilder, IsCopiedDeeply) {
    zan::MessageBuilder const usual = zan::MessageBuilder("D").set(tag::Symbol, "IBM");
    zan::MessageBuilder other(usual);
    other.set(tag::Symbol, "MSFT");
    EXPECT_EQ(textOf(usual, 55), "IBM");
    EXPECT_EQ(textOf(other, 55), "MSFT");
}

} // namespace
