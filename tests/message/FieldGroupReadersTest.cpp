#include "infra/InfraException.h"
#include "message/ZANFieldGroup.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

namespace {

using Text = std::string;

counted_ptr<ZANField> textField(int tag, Text const& text) {
    Value value;
    value.setString(text);
    return counted_ptr<ZANField>(new ZANField(tag, Value::STRING, value));
}

counted_ptr<ZANFieldGroup> leg(Text const& symbol) {
    counted_ptr<ZANFieldGroup> group(new ZANFieldGroup(555));
    group->setFieldValue(600, symbol);
    return group;
}

template <class Operation>
Text messageOf(Operation operation) {
    try {
        operation();
    } catch (InfraException const& e) {
        return e.getMessage();
    }
    return "no exception";
}

TEST(FieldGroupReaders, ReadEachType) {
    ZANFieldGroup group;
    group.setFieldValue(1, "text");
    group.setFieldValue(2, "-17");
    group.setFieldValue(3, "10.25");
    group.setFieldValue(4, "Y");
    group.setFieldValue(5, '2');
    group.setFieldValue(6, 4);
    EXPECT_EQ("text", group.getString(1, "none"));
    EXPECT_EQ(-17L, group.getLong(2, 0));
    EXPECT_EQ(-17, group.getInt(2, 0));
    EXPECT_EQ(10.25, group.getDouble(3, 0));
    EXPECT_TRUE(group.getBool(4, false));
    EXPECT_EQ('2', group.getChar(5, ' '));
    EXPECT_EQ(2, group.getInt(5, 0));
    EXPECT_EQ("4", group.getString(6));
}

TEST(FieldGroupReaders, AnswerTheDefaultForAnAbsentField) {
    ZANFieldGroup const group;
    EXPECT_EQ("none", group.getString(1, "none"));
    EXPECT_EQ("", group.getString(1));
    EXPECT_EQ(7L, group.getLong(1, 7));
    EXPECT_EQ(7, group.getInt(1, 7));
    EXPECT_EQ(0.5, group.getDouble(1, 0.5));
    EXPECT_TRUE(group.getBool(1, true));
    EXPECT_EQ('x', group.getChar(1, 'x'));
    EXPECT_FALSE(group.find(1));
    EXPECT_FALSE(group.has(1));
}

TEST(FieldGroupReaders, ThrowWithTagAndTextForAnUnreadableField) {
    ZANFieldGroup group;
    group.setFieldValue(44, "12,5");
    group.setFieldValue(38, "99999999999");
    for (Text const& message : {messageOf([&] { static_cast<void>(group.getDouble(44, 0)); }),
                                messageOf([&] { static_cast<void>(group.getLong(44, 0)); }),
                                messageOf([&] { static_cast<void>(group.getInt(44, 0)); }),
                                messageOf([&] { static_cast<void>(group.getBool(44, false)); }),
                                messageOf([&] { static_cast<void>(group.getChar(44, ' ')); })}) {
        EXPECT_EQ(0u, message.find("Field 44: ")) << message;
        EXPECT_NE(Text::npos, message.find("\"12,5\"")) << message;
    }
    Text const tooLarge = messageOf([&] { static_cast<void>(group.getInt(38, 0)); });
    EXPECT_EQ(0u, tooLarge.find("Field 38: ")) << tooLarge;
    // A `long` of 32 bits does not take the text in the first place.
    char const* const reason = sizeof(long) > 4 ? "32 bits" : "99999999999";
    EXPECT_NE(Text::npos, tooLarge.find(reason)) << tooLarge;
}

TEST(FieldGroupReaders, FindCopiesTheValue) {
    ZANFieldGroup group;
    group.setFieldValue(58, "before, and longer than what a value holds in its place");
    auto const found = group.find(58);
    group.removeField(58);
    ASSERT_TRUE(found);
    EXPECT_EQ("before, and longer than what a value holds in its place", found->asString());
}

TEST(FieldGroupReaders, TakeAPlaceThatAnIteratorEmptiedAsAbsent) {
    ZANFieldGroup group;
    group.setFieldValue(1, 1);
    group.setFieldValue(2, 2);
    group.fieldIterator()->current() = nullptr;
    EXPECT_FALSE(group.has(1));
    EXPECT_FALSE(group.find(1));
    EXPECT_EQ(9, group.getInt(1, 9));
    EXPECT_EQ(1u, group.size());
    EXPECT_EQ(2, group.begin()->getTag());
}

TEST(FieldGroupReaders, WalkOverTheFieldsByAscendingTag) {
    ZANFieldGroup group("D", "FIX.4.4");
    group.setFieldValue(11, "A1");
    group.addGroup(leg("A"));
    std::vector<int> tags;
    for (ZANField const& field : group) {
        tags.push_back(field.getTag());
    }
    EXPECT_EQ((std::vector<int>{8, 11, 35}), tags);
    EXPECT_EQ(3u, group.size());
    auto const order = [](ZANField const& field) { return field.getTag() == 11; };
    EXPECT_EQ("A1", std::find_if(group.begin(), group.end(), order)->getValue().asString());
    EXPECT_EQ(0u, ZANFieldGroup().size());
}

TEST(FieldGroupReaders, WalkOverTheInstancesOfARepeatingGroup) {
    ZANFieldGroup group("AB");
    for (char const* symbol : {"A", "B", "C"}) {
        group.addGroup(leg(symbol));
    }
    auto const emptied = group.groupIterator(555);
    emptied->next();
    emptied->current() = nullptr;
    Text symbols;
    for (ZANFieldGroup const& instance : group.instances(555)) {
        symbols += instance.getString(600);
    }
    EXPECT_EQ("AC", symbols);
    for (ZANFieldGroup const& instance : group.instances(78)) {
        ADD_FAILURE() << instance.getGroupTag();
    }
}

TEST(FieldGroupReaders, HoldTheInstanceThatALoopStandsOn) {
    ZANFieldGroup group;
    group.addGroup(leg("A"));
    group.addGroup(leg("B"));
    Text symbols;
    for (ZANFieldGroup const& instance : group.instances(555)) {
        group.removeGroup(555);
        symbols += instance.getString(600);
    }
    EXPECT_EQ("A", symbols);
}

/// A group whose fields are made when somebody asks.
class Computed final : public ZANFieldGroup {
public:
    counted_ptr<ZANField> getField(int tag) const override {
        return tag == 1 ? textField(tag, "12") : nullptr;
    }
    counted_ptr<ZANField> getField(int tag) override {
        return static_cast<Computed const*>(this)->getField(tag);
    }
    int getGroupCount(int) const override { return 2; }
    counted_ptr<ZANFieldGroup> getGroup(int, int index) const override {
        return leg(std::to_string(index));
    }
};

TEST(FieldGroupReaders, AskTheOperationsOfADerivedGroup) {
    Computed const computed;
    ZANFieldGroup const& group = computed;
    EXPECT_EQ(12, group.getInt(1, 0));
    EXPECT_EQ("12", group.find(1)->asString());
    EXPECT_TRUE(group.has(1));
    EXPECT_FALSE(group.has(2));
    Text symbols;
    for (ZANFieldGroup const& instance : group.instances(1)) {
        symbols += instance.getString(600);
    }
    EXPECT_EQ("01", symbols);
}

class Shouting final : public ZANField {
public:
    explicit Shouting(int tag) { setTag(tag); }
    Value const& getValue() const override {
        static Value const loud = [] {
            Value value;
            value.setString("LOUD");
            return value;
        }();
        return loud;
    }
};

TEST(FieldGroupReaders, AskTheOperationsOfADerivedField) {
    ZANFieldGroup group;
    group.addField(counted_ptr<ZANField>(new Shouting(1)));
    EXPECT_EQ("LOUD", group.getString(1));
    EXPECT_EQ("LOUD", group.find(1)->asString());
}

/// Tells which virtual operation a call has chosen.
class Choice final : public ZANFieldGroup {
public:
    using ZANFieldGroup::setFieldValue;
    void setFieldValue(int, char) override { chosen = "char"; }
    void setFieldValue(int, bool) override { chosen = "bool"; }
    void setFieldValue(int, double) override { chosen = "double"; }
    void setFieldValue(int, long value) override { chosen = "long " + std::to_string(value); }
    void setFieldValue(int, int) override { chosen = "int"; }
    void setFieldValue(int, Text const& value) override { chosen = "string " + value; }
    void setFieldValue(int, Value const&) override { chosen = "Value"; }

    Text chosen;
};

template <class Payload>
Text choiceFor(Payload&& payload) {
    Choice choice;
    choice.setFieldValue(1, std::forward<Payload>(payload));
    return choice.chosen;
}

enum Side { buy = 1 };

struct Both {
    operator Text() const { return "text"; }
    operator std::string_view() const { return "view"; }
};

TEST(FieldGroupSetters, ChooseTheSameOperationAsEver) {
    char writable[] = "text";
    EXPECT_EQ("char", choiceFor('1'));
    EXPECT_EQ("bool", choiceFor(true));
    EXPECT_EQ("double", choiceFor(1.5));
    EXPECT_EQ("double", choiceFor(1.5F));
    EXPECT_EQ("long 5", choiceFor(5L));
    EXPECT_EQ("int", choiceFor(5));
    EXPECT_EQ("int", choiceFor(buy));
    EXPECT_EQ("int", choiceFor(static_cast<short>(5)));
    EXPECT_EQ("int", choiceFor(static_cast<unsigned short>(5)));
    EXPECT_EQ("int", choiceFor(static_cast<unsigned char>(5)));
    EXPECT_EQ("string text", choiceFor("text"));
    EXPECT_EQ("string text", choiceFor(static_cast<char const*>("text")));
    EXPECT_EQ("string text", choiceFor(writable));
    EXPECT_EQ("string text", choiceFor(Text("text")));
    EXPECT_EQ("string text", choiceFor(Both()));
    EXPECT_EQ("Value", choiceFor(Value()));
    EXPECT_NE("no exception", messageOf([] { choiceFor(nullptr); }));
}

TEST(FieldGroupSetters, TakeTheOtherWholeNumbersAndStringViews) {
    EXPECT_EQ("long -5", choiceFor(-5LL));
    EXPECT_EQ("long 5", choiceFor(5U));
    EXPECT_EQ("long 5", choiceFor(5UL));
    EXPECT_EQ("long 5", choiceFor(5ULL));
    EXPECT_EQ("long 5", choiceFor(std::size_t{5}));
    EXPECT_EQ("string view", choiceFor(std::string_view("views").substr(0, 4)));
}

TEST(FieldGroupSetters, RefuseANumberThatIsNoLong) {
    ZANFieldGroup group;
    Text const message =
        messageOf([&] { group.setFieldValue(38, std::numeric_limits<unsigned long long>::max()); });
    EXPECT_NE(Text::npos, message.find("Field 38")) << message;
    EXPECT_NE(Text::npos, message.find("18446744073709551615")) << message;
    EXPECT_TRUE(group.empty());
}

template <class Payload, class = void>
constexpr bool isAccepted = false;

template <class Payload>
constexpr bool
    isAccepted<Payload, std::void_t<decltype(std::declval<ZANFieldGroup&>().setFieldValue(
                            1, std::declval<Payload>()))>> = true;

static_assert(isAccepted<char const*> && isAccepted<char*> && isAccepted<char const (&)[2]>);
static_assert(isAccepted<std::nullptr_t>);
static_assert(!isAccepted<wchar_t const*> && !isAccepted<wchar_t const (&)[2]>);
static_assert(!isAccepted<void*> && !isAccepted<int const*> && !isAccepted<char volatile*>);
static_assert(!isAccepted<unsigned char const*> && !isAccepted<Text*>);
static_assert(!isAccepted<void (*)()> && !isAccepted<void (&)()> && !isAccepted<int Both::*>);

} // namespace
