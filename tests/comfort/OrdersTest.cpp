#include "comfort/Orders.h"

#include "comfort/MessageBuilder.h"

#include <gtest/gtest.h>

#include <string>

namespace {

bool closes(std::string const& type, std::string const& status) {
    return zan::closesOrder(zan::FieldReader(
        zan::MessageBuilder(type).set(zan::tag::OrdStatus.number, status).build()));
}

TEST(ClosesOrder, IsTrueForAReportAfterWhichNothingIsOpen) {
    for (char const* status : {"2", "3", "4", "8", "C"}) {
        EXPECT_TRUE(closes("8", status)) << status;
    }
    for (char const* status : {"0", "1", "5", "6", "7", "9", "A", "E", "Z", "22"}) {
        EXPECT_FALSE(closes("8", status)) << status;
    }
}

TEST(ClosesOrder, IsFalseForOtherMessages) {
    EXPECT_FALSE(closes("9", "2")); // a cancel was rejected, with the order's status
    EXPECT_FALSE(closes("D", "2"));
    EXPECT_FALSE(zan::closesOrder(zan::FieldReader(zan::MessageBuilder("8").build())));
    EXPECT_FALSE(zan::closesOrder(zan::FieldReader(ZANMessage())));
}

} // namespace
