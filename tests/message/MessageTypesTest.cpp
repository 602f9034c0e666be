#include "message/ZAN.h"

#include <gtest/gtest.h>

#include <iterator>
#include <string>
#include <type_traits>

namespace {

struct NamedType {
    std::string const& constant;
    char const* value;
};

TEST(MessageTypes, HaveTheirValues) {
    NamedType const types[] = {
        {ZAN::MSGTYPE_HEARTBEAT, "0"},
        {ZAN::MSGTYPE_TEST_REQUEST, "1"},
        {ZAN::MSGTYPE_RESEND_REQUEST, "2"},
        {ZAN::MSGTYPE_REJECT, "3"},
        {ZAN::MSGTYPE_SEQUENCE_RESET, "4"},
        {ZAN::MSGTYPE_LOGOUT, "5"},
        {ZAN::MSGTYPE_INDICATION_OF_INTEREST, "6"},
        {ZAN::MSGTYPE_ADVERTISEMENT, "7"},
        {ZAN::MSGTYPE_EXECUTION_REPORT, "8"},
        {ZAN::MSGTYPE_ORDER_CANCEL_REJECT, "9"},
        {ZAN::MSGTYPE_LOGON, "A"},
        {ZAN::MSGTYPE_NEWS, "B"},
        {ZAN::MSGTYPE_EMAIL, "C"},
        {ZAN::MSGTYPE_NEW_ORDER_SINGLE, "D"},
        {ZAN::MSGTYPE_ORDER_LIST, "E"},
        {ZAN::MSGTYPE_ORDER_CANCEL_REQUEST, "F"},
        {ZAN::MSGTYPE_ORDER_CANCEL_REPLACE_REQUEST, "G"},
        {ZAN::MSGTYPE_ORDER_STATUS_REQUEST, "H"},
        {ZAN::MSGTYPE_ALLOCATION, "J"},
        {ZAN::MSGTYPE_LIST_CANCEL_REQUEST, "K"},
        {ZAN::MSGTYPE_LIST_EXECUTE, "L"},
        {ZAN::MSGTYPE_LIST_STATUS_REQUEST, "M"},
        {ZAN::MSGTYPE_LIST_STATUS, "N"},
        {ZAN::MSGTYPE_ALLOCATION_ACK, "P"},
        {ZAN::MSGTYPE_DONT_KNOW_TRADE, "Q"},
        {ZAN::MSGTYPE_QUOTE_REQUEST, "R"},
        {ZAN::MSGTYPE_QUOTE, "S"},
        {ZAN::MSGTYPE_SETTLEMENT_INSTRUCTIONS, "T"},
        {ZAN::MSGTYPE_BOOK_REQUEST, "r"},
        {ZAN::MSGTYPE_BOOK_FULL, "s"},
        {ZAN::MSGTYPE_BOOK_INCREMENTAL, "t"},
        {ZAN::MSGTYPE_BOOK_REQUESTREJECT, "u"},
        {ZAN::MSGTYPE_ACCOUNT_ALLOCATION, "UAJ"},
        {ZAN::MSGTYPE_COMMAND, "UCC"},
    };
    EXPECT_EQ(std::size(types), 34u);
    for (auto const& type : types) {
        EXPECT_EQ(type.constant, type.value);
    }
}

TEST(MessageTypes, TellSmallLettersFromCapitals) {
    EXPECT_NE(ZAN::MSGTYPE_BOOK_REQUEST, ZAN::MSGTYPE_QUOTE_REQUEST);
}

TEST(MessageTypes, ThreeCharactersAreNotTheirFirstOne) {
    EXPECT_NE(ZAN::MSGTYPE_ACCOUNT_ALLOCATION, "U");
    EXPECT_NE(ZAN::MSGTYPE_COMMAND, "U");
}

TEST(MessageTypes, ClassIsABaseAndNotBuiltOnItsOwn) {
    struct MoreTypes : ZAN {};
    EXPECT_FALSE(std::is_default_constructible_v<ZAN>);
    EXPECT_TRUE(std::is_default_constructible_v<MoreTypes>);
    EXPECT_TRUE(std::is_copy_constructible_v<ZAN>);
    EXPECT_TRUE(std::is_copy_assignable_v<ZAN>);
    EXPECT_TRUE(std::has_virtual_destructor_v<ZAN>);
}

} // namespace
