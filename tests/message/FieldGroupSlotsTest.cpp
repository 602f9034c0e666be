#include "message/ZANFieldGroup.h"
#include "support/Slots.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using G = ZANFieldGroup;
using Field = counted_ptr<ZANField>;
using Group = counted_ptr<ZANFieldGroup>;
using Fields = counted_ptr<ZANIterator<Field>>;
using Groups = counted_ptr<ZANIterator<Group>>;

TEST(ZANFieldGroup, KeepsTheSlotsOfItsFieldOperations) {
    EXPECT_EQ(2u, slotOf(&G::setGroupTag));
    EXPECT_EQ(3u, slotOf(&G::getGroupTag));
    EXPECT_EQ(4u, slotOf(&G::empty));
    EXPECT_EQ(5u, slotOf(&G::addField));
    EXPECT_EQ(6u, slotOf(static_cast<void (G::*)(int, char)>(&G::setFieldValue)));
    EXPECT_EQ(7u, slotOf(static_cast<void (G::*)(int, bool)>(&G::setFieldValue)));
    EXPECT_EQ(8u, slotOf(static_cast<void (G::*)(int, double)>(&G::setFieldValue)));
    EXPECT_EQ(9u, slotOf(static_cast<void (G::*)(int, long)>(&G::setFieldValue)));
    EXPECT_EQ(10u, slotOf(static_cast<void (G::*)(int, int)>(&G::setFieldValue)));
    EXPECT_EQ(11u, slotOf(static_cast<void (G::*)(int, std::string const&)>(&G::setFieldValue)));
    EXPECT_EQ(12u, slotOf(static_cast<void (G::*)(int, Value const&)>(&G::setFieldValue)));
    EXPECT_EQ(13u, slotOf(&G::removeField));
    EXPECT_EQ(14u, slotOf(static_cast<Field (G::*)(int)>(&G::getField)));
    EXPECT_EQ(15u, slotOf(static_cast<Field (G::*)(int) const>(&G::getField)));
    EXPECT_EQ(16u, slotOf(&G::isFieldPresent));
    EXPECT_EQ(17u, slotOf(&G::isFieldsEmpty));
    EXPECT_EQ(18u, slotOf(static_cast<Fields (G::*)()>(&G::fieldIterator)));
    EXPECT_EQ(19u, slotOf(static_cast<Fields (G::*)() const>(&G::fieldIterator)));
}

TEST(ZANFieldGroup, KeepsTheSlotsOfItsGroupOperations) {
    EXPECT_EQ(20u, slotOf(&G::addGroup));
    EXPECT_EQ(21u, slotOf(&G::getGroupCount));
    EXPECT_EQ(22u, slotOf(static_cast<Group (G::*)(int, int)>(&G::getGroup)));
    EXPECT_EQ(23u, slotOf(static_cast<Group (G::*)(int, int) const>(&G::getGroup)));
    EXPECT_EQ(24u, slotOf(static_cast<void (G::*)(int, int)>(&G::removeGroup)));
    EXPECT_EQ(25u, slotOf(static_cast<void (G::*)(int)>(&G::removeGroup)));
    EXPECT_EQ(26u, slotOf(&G::isGroupPresent));
    EXPECT_EQ(27u, slotOf(&G::isGroupsEmpty));
    EXPECT_EQ(28u, slotOf(static_cast<Groups (G::*)(int)>(&G::groupIterator)));
    EXPECT_EQ(29u, slotOf(static_cast<Groups (G::*)(int) const>(&G::groupIterator)));
    EXPECT_EQ(30u, slotOf(static_cast<Groups (G::*)()>(&G::groupIterator)));
    EXPECT_EQ(31u, slotOf(static_cast<Groups (G::*)() const>(&G::groupIterator)));
    EXPECT_EQ(32u, slotOf(&G::clear));
    EXPECT_EQ(33u, slotOf(&G::setProtocolVersion));
    EXPECT_EQ(34u, slotOf(&G::setMsgType));
}

TEST(ZANIterator, KeepsItsSlots) {
    using I = ZANIterator<Field>;
    EXPECT_EQ(2u, slotOf(&I::hasNext));
    EXPECT_EQ(3u, slotOf(&I::next));
    EXPECT_EQ(4u, slotOf(static_cast<Field& (I::*)()>(&I::current)));
    EXPECT_EQ(5u, slotOf(static_cast<Field const& (I::*)() const>(&I::current)));
}

} // namespace
