#include "message/ZANMessage.h"

#include "infra/InfraException.h"
#include "support/Slots.h"

#include <gtest/gtest.h>

#include <sstream>

namespace {

counted_ptr<ZANFieldGroup> orderBody() {
    return counted_ptr<ZANFieldGroup>(new ZANFieldGroup("D", "FIX.4.4"));
}

TEST(ZANMessage, HasNoGroupUnlessGivenOne) {
    ZANMessage message;
    EXPECT_FALSE(message.getFieldGroup());
    ZANMessage const& constant = message;
    EXPECT_FALSE(constant.getFieldGroup());
}

TEST(ZANMessage, SharesTheGroupThatItIsGiven) {
    auto const body = orderBody();
    ZANMessage message(body);
    EXPECT_EQ(body, message.getFieldGroup());
    auto const other = orderBody();
    message.setFieldGroup(other);
    EXPECT_EQ(other, message.getFieldGroup());
    EXPECT_EQ(1u, body.use_count());
}

TEST(ZANMessage, ShowsChangesToItsCopies) {
    ZANMessage message(orderBody());
    ZANMessage const copy(message);
    ZANMessage assigned;
    assigned = message;
    message.getFieldGroup()->setFieldValue(11, "id-1");
    EXPECT_EQ("id-1", copy.getFieldGroup()->getField(11)->getValue().asString());
    EXPECT_EQ("id-1", assigned.getFieldGroup()->getField(11)->getValue().asString());
}

TEST(ZANMessage, TellsItsTimeStampAndConnectionMessageId) {
    ZANMessage const message(orderBody());
    message.getFieldGroup()->setFieldValue(16577, 1700000000123.0);
    message.getFieldGroup()->setFieldValue(16580, 42);
    EXPECT_EQ(1700000000123.0, message.getTimeStamp());
    EXPECT_EQ(42, message.getConnectionMessageId());
}

TEST(ZANMessage, ReadsTimeStampAndIdFromText) {
    ZANMessage const message(orderBody());
    message.getFieldGroup()->setFieldValue(16577, "1700000000123.5");
    message.getFieldGroup()->setFieldValue(16580, "42");
    EXPECT_EQ(1700000000123.5, message.getTimeStamp());
    EXPECT_EQ(42, message.getConnectionMessageId());
    message.getFieldGroup()->setFieldValue(16580, "42nd");
    EXPECT_THROW((void)message.getConnectionMessageId(), InfraException);
}

TEST(ZANMessage, PrintsItsGroupAndNothingElse) {
    auto const body = orderBody();
    std::ostringstream group;
    std::ostringstream message;
    group << *body;
    message << ZANMessage(body);
    EXPECT_EQ(group.str(), message.str());
}

TEST(ZANMessage, KeepsItsSlots) {
    using Body = counted_ptr<ZANFieldGroup>;
    EXPECT_EQ(2u, slotOf(&ZANMessage::setFieldGroup));
    EXPECT_EQ(3u, slotOf(static_cast<Body (ZANMessage::*)()>(&ZANMessage::getFieldGroup)));
    EXPECT_EQ(4u, slotOf(static_cast<Body (ZANMessage::*)() const>(&ZANMessage::getFieldGroup)));
}

} // namespace
