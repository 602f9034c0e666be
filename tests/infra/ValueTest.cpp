#include "infra/Value.h"

#include "infra/InfraException.h"
#include "infra/ValuePresentation.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <sstream>
#include <string>

namespace {

Value makeLong(long payload) {
    Value value;
    value.setType(Value::LONG);
    value.setLong(payload);
    return value;
}

Value makeDouble(double payload) {
    Value value;
    value.setType(Value::DOUBLE);
    value.setDouble(payload);
    return value;
}

Value makeString(std::string const& payload) {
    Value value;
    value.setType(Value::STRING);
    value.setString(payload);
    return value;
}

Value makeBool(bool payload) {
    Value value;
    value.setType(Value::BOOL);
    value.setBool(payload);
    return value;
}

Value makeChar(char payload) {
    Value value;
    value.setType(Value::CHAR);
    value.setChar(payload);
    return value;
}

std::string printed(Value const& value) {
    std::ostringstream os;
    os << std::hex << value;
    return os.str();
}

TEST(Value, HasTheTypeCodesOfTheEngine) {
    EXPECT_EQ(1, Value::LONG);
    EXPECT_EQ(2, Value::DOUBLE);
    EXPECT_EQ(3, Value::STRING);
    EXPECT_EQ(11, Value::BOOL);
    EXPECT_EQ(24, Value::CHAR);
}

TEST(Value, StartsWithNothing) {
    Value const value;
    EXPECT_EQ(0, value.getType());
    EXPECT_EQ("", value.asString());
    EXPECT_THROW((void)value.asLong(), InfraException);
}

TEST(Value, ReadsBackWhatWasStored) {
    EXPECT_EQ(-5, makeLong(-5).asLong());
    EXPECT_EQ(-5, makeLong(-5).asInt());
    EXPECT_EQ(2.5, makeDouble(2.5).asDouble());
    EXPECT_EQ("text", makeString("text").asString());
    EXPECT_EQ("text", makeString("text").asStringView());
    EXPECT_TRUE(makeBool(true).asBool());
    EXPECT_EQ('x', makeChar('x').asChar());
}

TEST(Value, PrintsEveryTypeInItsTextForm) {
    EXPECT_EQ("100", printed(makeLong(100)));
    EXPECT_EQ("-7", printed(makeLong(-7)));
    EXPECT_EQ("101.25", printed(makeDouble(101.25)));
    EXPECT_EQ("a b", printed(makeString("a b")));
    EXPECT_EQ("Y", printed(makeBool(true)));
    EXPECT_EQ("N", printed(makeBool(false)));
    EXPECT_EQ("1", printed(makeChar('1')));
}

TEST(Value, PrintsDoublesShortestWithoutAnExponentBetween1eMinus5And1e15) {
    struct {
        double number;
        char const* text;
    } const cases[] = {
        {0.0, "0"},
        {1.0, "1"},
        {-1.5, "-1.5"},
        {0.1, "0.1"},
        {100000.0, "100000"},
        {1e-5, "0.00001"},
        {0.000123, "0.000123"},
        {1e15, "1000000000000000"},
        {123456789.125, "123456789.125"},
        {1.0 / 3.0, "0.3333333333333333"},
        {1e22, "1e+22"},
        {1e-7, "1e-07"},
    };
    for (auto const& entry : cases) {
        EXPECT_EQ(entry.text, printed(makeDouble(entry.number)));
    }
}

TEST(Value, DoublesReadBackToTheSameValue) {
    for (double const number : {0.1, 1e-5, 123456.789, 1e15 / 7, 2.2250738585072014e-5}) {
        EXPECT_EQ(number, makeString(printed(makeDouble(number))).asDouble());
    }
}

TEST(Value, ALongKeepsAllItsBits) {
    long const largest = std::numeric_limits<long>::max();
    EXPECT_EQ(largest, makeLong(largest).asLong());
    EXPECT_EQ(std::to_string(largest), printed(makeLong(largest)));
}

TEST(Value, ReadsTextAsANumberOnlyWhenItIsExactlyOne) {
    EXPECT_EQ(42, makeString("42").asInt());
    EXPECT_EQ(-42, makeString("-42").asLong());
    EXPECT_EQ(42.5, makeString("42.5").asDouble());
    EXPECT_EQ(-0.5, makeString("-0.5").asDouble());
    EXPECT_EQ(1700000000123.0, makeString("1700000000123").asDouble());
    for (char const* text : {"", " 42", "42 ", "4x", "x", "1e5", "0x10", "nan", "inf", "+5",
                             "1.2.3", "-", ".", "-.", "--1"}) {
        EXPECT_THROW((void)makeString(text).asDouble(), InfraException) << text;
        EXPECT_THROW((void)makeString(text).asLong(), InfraException) << text;
    }
    EXPECT_THROW((void)makeString("42.5").asLong(), InfraException);
}

TEST(Value, RefusesNumbersThatDoNotFit) {
    EXPECT_THROW((void)makeString("99999999999999999999").asLong(), InfraException);
    EXPECT_THROW((void)makeString("2147483648").asInt(), InfraException);
    EXPECT_THROW((void)makeDouble(1e30).asLong(), InfraException);
    EXPECT_THROW((void)makeDouble(std::nan("")).asLong(), InfraException);
    EXPECT_EQ(std::numeric_limits<std::int32_t>::min(), makeDouble(-2147483648.0).asInt());
    EXPECT_EQ(3, makeDouble(3.9).asLong());
}

TEST(Value, TellsWhatItCouldNotRead) {
    try {
        (void)makeString("abc").asLong();
        FAIL();
    } catch (InfraException const& e) {
        EXPECT_EQ("Cannot read the value \"abc\" as a whole number.", e.getMessage());
    }
}

TEST(Value, ReadsOtherTypesWhereTheirTextMakesSense) {
    EXPECT_EQ(1, makeBool(true).asLong());
    EXPECT_EQ(0.0, makeBool(false).asDouble());
    EXPECT_EQ(7, makeChar('7').asLong());
    EXPECT_EQ(7.0, makeLong(7).asDouble());
    EXPECT_TRUE(makeString("Y").asBool());
    EXPECT_FALSE(makeChar('N').asBool());
    EXPECT_EQ('D', makeString("D").asChar());
    EXPECT_EQ('Y', makeBool(true).asChar());
    EXPECT_THROW((void)makeString("yes").asBool(), InfraException);
    EXPECT_THROW((void)makeString("DD").asChar(), InfraException);
    EXPECT_THROW((void)makeLong(1).asStringView(), InfraException);
}

TEST(Value, SettingAnotherTypeStartsItEmpty) {
    Value value = makeString("a text that is longer than what fits in place");
    value.setType(Value::LONG);
    EXPECT_EQ(0, value.asLong());
    value.setType(Value::STRING);
    EXPECT_EQ("", value.asStringView());
}

TEST(Value, SettingTheSameTypeKeepsThePayload) {
    Value value = makeLong(5);
    value.setType(Value::LONG);
    EXPECT_EQ(5, value.asLong());
}

TEST(Value, RefusesAnUnknownType) {
    Value value;
    EXPECT_THROW(value.setType(99), InfraException);
    EXPECT_EQ(0, value.getType());
}

TEST(Value, KeepsStringsOfEveryLengthThroughCopyMoveAndAssignment) {
    for (std::size_t size = 0; size <= 70; ++size) {
        std::string const text(size, 'x');
        Value const original = makeString(text);
        Value copy(original);
        Value assigned = makeString("something quite long that has to be let go of");
        assigned = copy;
        Value const moved(std::move(copy));
        EXPECT_EQ(text, original.asStringView());
        EXPECT_EQ(text, assigned.asStringView());
        EXPECT_EQ(text, moved.asStringView());
    }
}

TEST(Value, KeepsAnyBytes) {
    std::string const bytes("a\0b\x01\xff", 5);
    EXPECT_EQ(bytes, makeString(bytes).asStringView());
}

TEST(Value, AssignedToItselfIsUnchanged) {
    Value value = makeString("a text that is longer than what fits in place");
    auto const& same = value;
    value = same;
    EXPECT_EQ("a text that is longer than what fits in place", value.asStringView());
}

TEST(Value, EqualWhenTypeAndPayloadAre) {
    EXPECT_TRUE(makeLong(1) == makeLong(1));
    EXPECT_TRUE(makeLong(1) != makeLong(2));
    EXPECT_TRUE(makeLong(1) != makeDouble(1));
    EXPECT_TRUE(makeString("1") != makeChar('1'));
    EXPECT_TRUE(makeString(std::string(30, 'x')) == makeString(std::string(30, 'x')));
    EXPECT_TRUE(makeBool(true) == makeBool(true));
    EXPECT_TRUE(Value() == Value());
    EXPECT_TRUE(makeDouble(std::nan("")) != makeDouble(std::nan("")));
    EXPECT_FALSE(makeDouble(std::nan("")) == makeDouble(std::nan("")));
}

TEST(ValueDefaultPresentation, NamesTheTypes) {
    ValueDefaultPresentation presentation;
    for (int const type : {Value::LONG, Value::DOUBLE, Value::STRING, Value::BOOL, Value::CHAR}) {
        EXPECT_EQ(type,
                  presentation.getTypeByPresentation(presentation.getPresentationForType(type)));
    }
    EXPECT_THROW(presentation.getPresentationForType(4), InfraException);
    EXPECT_THROW(presentation.getTypeByPresentation("text"), InfraException);
    EXPECT_TRUE(presentation.isTypeNumeric(Value::LONG));
    EXPECT_TRUE(presentation.isTypeNumeric(Value::DOUBLE));
    EXPECT_FALSE(presentation.isTypeNumeric(Value::STRING));
    EXPECT_TRUE(presentation.canHaveNumericRepresentation(Value::CHAR));
    EXPECT_FALSE(presentation.canHaveNumericRepresentation(0));
}

TEST(ValueDefaultPresentation, FillsValuesFromTheirText) {
    ValueDefaultPresentation presentation;
    Value value;
    EXPECT_EQ(makeLong(12), presentation.fillValueFromString("12", value, Value::LONG));
    EXPECT_EQ(makeDouble(1.5), presentation.fillValueFromString("1.5", value, Value::DOUBLE));
    EXPECT_EQ(makeString("s"), presentation.fillValueFromString("s", value, Value::STRING));
    EXPECT_EQ(makeBool(true), presentation.fillValueFromString("Y", value, Value::BOOL));
    EXPECT_EQ(makeChar('c'), presentation.fillValueFromString("c", value, Value::CHAR));
    EXPECT_THROW(presentation.fillValueFromString("x", value, Value::LONG), InfraException);
    EXPECT_THROW(presentation.fillValueFromString("x", value, 5), InfraException);
    EXPECT_EQ(makeChar('c'), value);
}

class LoudPresentation : public ValueDefaultPresentation {
public:
    std::string& fillStringFromValue(Value const& value, std::string& text) override {
        ValueDefaultPresentation::fillStringFromValue(value, text);
        return text += "!";
    }
};

TEST(ValuePresentation, TheInstalledOneWritesTheTextForms) {
    TSingleton<ValuePresentation>::initialize(new LoudPresentation);
    EXPECT_EQ("5!", printed(makeLong(5)));
    EXPECT_EQ("5!", makeLong(5).asString());
    EXPECT_EQ("5", makeString("5").asStringView());
    TSingleton<ValuePresentation>::uninitialize();
    EXPECT_EQ("5", printed(makeLong(5)));
}

TEST(ValuePresentation, UninitializeHandsTheInstanceOut) {
    auto* const installed = new ValueDefaultPresentation;
    TSingleton<ValuePresentation>::initialize(installed);
    EXPECT_EQ(installed, ValuePresentation::Instance_);
    auto const removed = TSingleton<ValuePresentation>::uninitialize();
    EXPECT_EQ(installed, removed.get());
    EXPECT_EQ(nullptr, ValuePresentation::Instance_);
    EXPECT_EQ(nullptr, TSingleton<ValuePresentation>::uninitialize());
}

} // namespace
