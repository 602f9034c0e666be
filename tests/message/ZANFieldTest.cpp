#include "message/ZANField.h"

#include "infra/InfraException.h"
#include "infra/ValuePresentation.h"
#include "infra/counted_ptr.h"
#include "support/Slots.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

namespace {

Value stringValue(std::string const& text) {
    Value value;
    value.setString(text);
    return value;
}

Value doubleValue(double number) {
    Value value;
    value.setDouble(number);
    return value;
}

TEST(ZANField, StartsWithTagAndTypeZero) {
    ZANField const field;
    EXPECT_EQ(0, field.getTag());
    EXPECT_EQ(0, field.getType());
}

TEST(ZANField, KeepsTagTypeAndValue) {
    ZANField const field(35, Value::STRING, stringValue("D"));
    EXPECT_EQ(35, field.getTag());
    EXPECT_EQ(Value::STRING, field.getType());
    EXPECT_EQ("D", field.getValue().asStringView());
}

TEST(ZANField, SettingAValueOfAnotherTypeKeepsTheTypeCode) {
    ZANField field(44, Value::STRING, stringValue("1"));
    field.setValue(doubleValue(2.5));
    EXPECT_EQ(3, field.getType());
    EXPECT_EQ(2.5, field.getValue().asDouble());
}

TEST(ZANField, EqualWhenTagTypeAndValueAre) {
    ZANField const field(1, Value::STRING, stringValue("a"));
    ZANField const same(1, Value::STRING, stringValue("a"));
    EXPECT_TRUE(field == same);
    EXPECT_FALSE(field != same);
    ZANField const others[] = {ZANField(2, Value::STRING, stringValue("a")),
                               ZANField(1, Value::LONG, stringValue("a")),
                               ZANField(1, Value::STRING, stringValue("b"))};
    for (auto const& other : others) {
        EXPECT_FALSE(field == other);
        EXPECT_TRUE(field != other);
    }
}

TEST(ZANField, AssignedToItselfIsUnchanged) {
    ZANField field(1, Value::STRING, stringValue("a text that is longer than fits in place"));
    auto const& same = field;
    field = same;
    EXPECT_EQ(1, field.getTag());
    EXPECT_EQ("a text that is longer than fits in place", field.getValue().asStringView());
}

class ShiftedField : public ZANField {
public:
    using ZANField::ZANField;
    int getTag() const override { return ZANField::getTag() + 1000; }
    void setType(int type) override { ZANField::setType(type + 1); }
};

TEST(ZANField, AssignmentGoesThroughTheVirtualOperationsOfBoth) {
    ShiftedField const source(1, Value::STRING, stringValue("x"));
    ShiftedField target;
    target.ZANField::operator=(source);
    EXPECT_EQ(2001, target.getTag());
    EXPECT_EQ(Value::STRING + 1, target.getType());
}

TEST(ZANField, ComparisonGoesThroughTheVirtualGettersOfBoth) {
    ShiftedField const shifted(1, Value::STRING, stringValue("x"));
    ZANField const plain(1001, Value::STRING, stringValue("x"));
    EXPECT_TRUE(plain == shifted);
    EXPECT_FALSE(plain != shifted);
    EXPECT_TRUE(shifted == plain);
}

TEST(ZANField, PrintsOnOneLineWithTwoBlanksAfterTheWordAndNoLineEnd) {
    std::ostringstream os;
    os << std::hex << ZANField(35, Value::STRING, stringValue("D"));
    EXPECT_EQ("Field  tag = 35 type = 3 value = D", os.str());
}

TEST(ZANField, PrintsATextOfAnyLength) {
    std::string const text(1000, 'x');
    std::ostringstream os;
    os << ZANField(58, Value::STRING, stringValue(text));
    EXPECT_EQ("Field  tag = 58 type = 3 value = " + text, os.str());
}

TEST(ZANField, DerivedFieldsLiveOnTheHeapLikePlainOnes) {
    struct LargeField : ZANField {
        using ZANField::ZANField;
        long more[40] = {};
    };
    counted_ptr<ZANField> const field(new LargeField(1, Value::STRING, stringValue("x")));
    EXPECT_EQ(1, field->getTag());
}

TEST(ZANField, KeepsItsSlots) {
    EXPECT_EQ(2u, slotOf(&ZANField::getTag));
    EXPECT_EQ(3u, slotOf(&ZANField::getType));
    EXPECT_EQ(4u, slotOf(&ZANField::getValue));
    EXPECT_EQ(5u, slotOf(&ZANField::setTag));
    EXPECT_EQ(6u, slotOf(&ZANField::setType));
    EXPECT_EQ(7u, slotOf(&ZANField::setValue));
    EXPECT_EQ(8u, slotOf(&ZANField::operator=));
    EXPECT_EQ(9u, slotOf(&ZANField::operator==));
    EXPECT_EQ(10u, slotOf(&ZANField::operator!=));
}

/// Has no text for any value.
class ThrowingPresentation : public ValueDefaultPresentation {
public:
    std::string& fillStringFromValue(Value const&, std::string&) override {
        throw InfraException("no text");
    }
};

TEST(ZANField, PrintsWhatStandsBeforeAValueWhosePresentationThrows) {
    ValuePresentation::initialize(new ThrowingPresentation);
    std::ostringstream os;
    EXPECT_THROW(os << ZANField(35, 3, Value()), InfraException);
    ValuePresentation::uninitialize();
    EXPECT_EQ("Field  tag = 35 type = 3 value = ", os.str());
}

} // namespace
