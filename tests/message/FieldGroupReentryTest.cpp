#include "message/IZANFieldGroupWalker.h"
#include "message/ZANFieldGroup.h"

#include <gtest/gtest.h>

#include <functional>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace {

using Field = counted_ptr<ZANField>;
using Group = counted_ptr<ZANFieldGroup>;
using Action = std::function<void()>;

Value textAsValue(std::string const& text) {
    Value value;
    value.setString(text);
    return value;
}

/// A field that calls back where its group calls it, once each.
class CallingField final : public ZANField {
public:
    explicit CallingField(int tag) : ZANField(tag, Value::STRING, textAsValue("calling")) {}
    ~CallingField() override { run(onEnd); }

    int getTag() const override {
        run(onGetTag);
        return ZANField::getTag();
    }
    Value const& getValue() const override {
        run(onGetValue);
        return ZANField::getValue();
    }
    void setValue(Value const& value) override {
        run(onSetValue);
        ZANField::setValue(value);
    }

    Action mutable onGetTag;
    Action mutable onGetValue;
    Action mutable onSetValue;
    Action mutable onEnd;

private:
    static void run(Action& action) {
        if (Action const once = std::exchange(action, nullptr)) {
            once();
        }
    }
};

class EndingGroup final : public ZANFieldGroup {
public:
    EndingGroup(int tag, Action onEnd) : ZANFieldGroup(tag), onEnd_(std::move(onEnd)) {}
    ~EndingGroup() override { onEnd_(); }

private:
    Action onEnd_;
};

CallingField& addCallingField(ZANFieldGroup& group, int tag) {
    auto* const field = new CallingField(tag);
    group.addField(Field(field));
    return *field;
}

Group groupOf(int tag, int fieldTag = 1) {
    Group group(new ZANFieldGroup(tag));
    group->setFieldValue(fieldTag, fieldTag);
    return group;
}

void addMany(ZANFieldGroup& group, int first, int count = 40) {
    for (int tag = first; tag < first + count; ++tag) {
        group.setFieldValue(tag, tag);
    }
}

std::vector<int> fieldTags(ZANFieldGroup const& group) {
    std::vector<int> tags;
    for (ZANField const& field : group) {
        tags.push_back(field.getTag());
    }
    return tags;
}

std::string printedGroup(ZANFieldGroup const& group) {
    std::ostringstream text;
    text << group;
    return text.str();
}

TEST(FieldGroupReentry, SetValueMayTakeItsFieldOutOfTheGroup) {
    ZANFieldGroup group;
    auto& field = addCallingField(group, 7);
    field.onSetValue = [&] { group.removeField(7); };
    group.setFieldValue(7, "a text that does not fit into the value itself");
    EXPECT_FALSE(group.has(7));
}

TEST(FieldGroupReentry, SetValueMayAddFields) {
    ZANFieldGroup group;
    auto& field = addCallingField(group, 7);
    field.onSetValue = [&] { addMany(group, 100); };
    group.setFieldValue(7, 5L);
    EXPECT_EQ(41u, group.size());
    EXPECT_EQ(5, group.getInt(7, 0));
}

TEST(FieldGroupReentry, AReplacedFieldsDestructorMayAddFields) {
    ZANFieldGroup group;
    for (int const tag : {1, 2, 4}) {
        group.setFieldValue(tag, tag);
    }
    addCallingField(group, 3).onEnd = [&] { addMany(group, -50); };
    Field const replacement(new ZANField(3, Value::STRING, textAsValue("new")));
    group.addField(replacement);
    EXPECT_EQ(replacement, group.getField(3));
    EXPECT_EQ(44u, group.size());
}

TEST(FieldGroupReentry, AReplacedFieldsDestructorMayClearTheGroup) {
    ZANFieldGroup group;
    addCallingField(group, 3).onEnd = [&] { group.clear(); };
    group.addField(Field(new ZANField(3, Value::STRING, textAsValue("new"))));
    EXPECT_TRUE(group.empty());
}

TEST(FieldGroupReentry, ARemovedFieldsDestructorMayEndTheGroup) {
    Group group = groupOf(0);
    addCallingField(*group, 3).onEnd = [&] { group.reset(); };
    group->removeField(3);
    EXPECT_FALSE(group);
}

TEST(FieldGroupReentry, WhatDestructorsAddWhileTheGroupIsClearedStays) {
    ZANFieldGroup group;
    addMany(group, 100);
    addCallingField(group, 3).onEnd = [&] { addMany(group, 200, 20); };
    group.addGroup(groupOf(555));
    group.clear();
    EXPECT_EQ(20u, group.size());
    EXPECT_TRUE(group.isGroupsEmpty());
}

TEST(FieldGroupReentry, WhatDestructorsAddWhileTheGroupEndsGoesWithIt) {
    int ended = 0;
    {
        ZANFieldGroup group;
        addMany(group, 100);
        addCallingField(group, 3).onEnd = [&] {
            addMany(group, 200);
            addCallingField(group, 4).onEnd = [&] { ++ended; };
            group.addGroup(Group(new EndingGroup(5, [&] { ++ended; })));
        };
    }
    EXPECT_EQ(2, ended);
}

TEST(FieldGroupReentry, AnEndingInstanceMayChangeItsGroup) {
    ZANFieldGroup group;
    auto const addEnding = [&] {
        group.addGroup(Group(new EndingGroup(5, [&] {
            for (int i = 0; i < 9; ++i) {
                group.addGroup(groupOf(5));
            }
        })));
    };
    addEnding();
    group.eraseGroup(5, 0);
    EXPECT_EQ(9, group.getGroupCount(5));
    group.removeGroup(5);
    addEnding();
    group.removeGroup(5, 1);
    EXPECT_EQ(9, group.getGroupCount(5));
    addEnding();
    group.removeGroup(5);
    EXPECT_EQ(9, group.getGroupCount(5));
}

TEST(FieldGroupReentry, SettersTakeAnEmptiedPlaceAsAbsent) {
    ZANFieldGroup group;
    addMany(group, 1, 4);
    for (auto const fields = group.fieldIterator(); fields->hasNext(); fields->next()) {
        fields->current() = nullptr;
    }
    group.setFieldValue(1, "text");
    group.setFieldValue(2, 2.5);
    group.setFieldValue(3, textAsValue("value"));
    group.addField(Field(new ZANField(4, Value::STRING, textAsValue("four"))));
    EXPECT_EQ("text", group.getString(1));
    EXPECT_EQ(Value::DOUBLE, group.getField(2)->getType());
    EXPECT_EQ("value", group.getString(3));
    EXPECT_EQ("four", group.getString(4));
}

TEST(FieldGroupReentry, EmptiedPlacesAreLeftOutOfCopiesTextsAndWalks) {
    struct Counter final : IZANFieldGroupWalker {
        int fields = 0;
        int groups = 0;
        void startGroup(ZANFieldGroup const&) override { ++groups; }
        void processField(ZANField const&, ZANFieldGroup const&) override { ++fields; }
        void endGroup(ZANFieldGroup const&) override {}
    };
    ZANFieldGroup group;
    addMany(group, 1, 3);
    group.addGroup(groupOf(5));
    group.addGroup(groupOf(5));
    group.fieldIterator()->current() = nullptr;
    group.groupIterator(5)->current() = nullptr;
    ZANFieldGroup const copy(group);
    EXPECT_EQ((std::vector<int>{2, 3}), fieldTags(copy));
    EXPECT_EQ(1, copy.getGroupCount(5));
    EXPECT_EQ(printedGroup(copy), printedGroup(group));
    Counter counter;
    counter.walkThrough(group);
    EXPECT_EQ(3, counter.fields);
    EXPECT_EQ(2, counter.groups);
}

TEST(FieldGroupReentry, CopyingAFieldMayChangeTheGroupThatIsCopied) {
    ZANFieldGroup group;
    addMany(group, 10, 3);
    auto& field = addCallingField(group, 5);
    field.onGetValue = [&] {
        group.removeField(5);
        addMany(group, 100);
    };
    ZANFieldGroup const copy(group);
    EXPECT_EQ("calling", copy.getString(5));
    EXPECT_EQ(44u, copy.size());
}

TEST(FieldGroupReentry, CopyingAnInstanceMayRemoveTheInstances) {
    ZANFieldGroup group;
    auto const first = groupOf(5);
    addCallingField(*first, 2).onGetValue = [&] { group.removeGroup(5); };
    group.addGroup(first);
    group.addGroup(groupOf(5));
    ZANFieldGroup const copy(group);
    EXPECT_EQ(2, copy.getGroupCount(5));
    EXPECT_TRUE(group.isGroupsEmpty());
}

TEST(FieldGroupReentry, PrintingAFieldMayTakeItOut) {
    ZANFieldGroup group;
    addMany(group, 10, 2);
    auto& field = addCallingField(group, 5);
    field.onGetValue = [&] {
        group.removeField(5);
        addMany(group, 100, 1);
    };
    EXPECT_NE(std::string::npos, printedGroup(group).find("calling"));
    EXPECT_EQ((std::vector<int>{10, 11, 100}), fieldTags(group));
}

TEST(FieldGroupReentry, AWalkSurvivesACallbackThatChangesTheGroup) {
    struct Remover final : IZANFieldGroupWalker {
        explicit Remover(ZANFieldGroup& top) : top_(top) {}
        std::vector<int> tags;
        void startGroup(ZANFieldGroup const&) override { top_.removeGroup(5); }
        void processField(ZANField const& field, ZANFieldGroup const&) override {
            int const tag = field.getTag();
            top_.removeField(tag);
            tags.push_back(field.getTag());
        }
        void endGroup(ZANFieldGroup const&) override {}
        ZANFieldGroup& top_;
    };
    ZANFieldGroup group;
    addMany(group, 1, 3);
    group.addGroup(groupOf(5, 20));
    Remover walker(group);
    walker.walkThrough(group);
    EXPECT_EQ((std::vector<int>{1, 2, 3}), walker.tags);
    EXPECT_TRUE(group.empty());
}

TEST(FieldGroupReentry, AFieldIteratorSurvivesChanges) {
    ZANFieldGroup group;
    addMany(group, 1, 3);
    auto const fields = group.fieldIterator();
    addMany(group, 100, 600);
    EXPECT_EQ(1, fields->current()->getTag());
    group.removeField(1);
    EXPECT_EQ(2, fields->current()->getTag());
    group.removeField(2);
    fields->next();
    EXPECT_EQ(3, fields->current()->getTag());
    group.clear();
    EXPECT_FALSE(fields->hasNext());
    EXPECT_FALSE(fields->current());
}

TEST(FieldGroupReentry, AnInstanceIteratorSurvivesTheEndOfItsTag) {
    ZANFieldGroup group;
    int ended = 0;
    group.addGroup(Group(new EndingGroup(5, [&] { ++ended; })));
    auto const instances = group.groupIterator(5);
    group.removeGroup(5);
    EXPECT_EQ(1, ended);
    EXPECT_FALSE(instances->hasNext());
    group.addGroup(Group(new EndingGroup(5, [&] { ++ended; })));
    auto const again = group.groupIterator(5);
    group.clear();
    EXPECT_EQ(2, ended);
    EXPECT_FALSE(again->hasNext());
    EXPECT_FALSE(again->current());
}

TEST(FieldGroupReentry, AGroupTakesOverAPartOfItself) {
    ZANFieldGroup group;
    Group const inner = groupOf(5, 50);
    inner->addGroup(groupOf(6, 60));
    group.addGroup(inner);
    std::string const expected = printedGroup(*inner->getGroup(6, 0));
    group = *group.getGroup(5, 0)->getGroup(6, 0);
    EXPECT_EQ(expected, printedGroup(group));
}

TEST(FieldGroupReentry, APartTakesOverItsGroup) {
    ZANFieldGroup group;
    Group const inner = groupOf(5, 50);
    group.addGroup(inner);
    group.setFieldValue(11, "top");
    *inner = group;
    EXPECT_EQ("top", inner->getString(11));
    EXPECT_EQ(0, inner->getGroupTag());
    EXPECT_EQ(1, group.getGroupCount(5));
}

/// Tells what it sees when it is cleared.
class ClearedGroup final : public ZANFieldGroup {
public:
    using ZANFieldGroup::operator=;
    void clear() override {
        seen = fieldTags(*this);
        sawGroups = !isGroupsEmpty();
        ZANFieldGroup::clear();
    }

    std::vector<int> seen;
    bool sawGroups = false;
};

TEST(FieldGroupReentry, AnAssignmentClearsTheGroupWhileItIsFull) {
    ClearedGroup group;
    addMany(group, 1, 3);
    group.addGroup(groupOf(5));
    group = *groupOf(9, 90);
    EXPECT_EQ((std::vector<int>{1, 2, 3}), group.seen);
    EXPECT_TRUE(group.sawGroups);
    EXPECT_EQ(9, group.getGroupTag());
    EXPECT_EQ((std::vector<int>{90}), fieldTags(group));
    EXPECT_TRUE(group.isGroupsEmpty());
}

TEST(FieldGroupReentry, ADerivedGroupTakesOverAPartOfItself) {
    ClearedGroup group;
    group.addGroup(groupOf(5, 50));
    group = *group.getGroup(5, 0);
    EXPECT_EQ((std::vector<int>{50}), fieldTags(group));
    EXPECT_EQ(5, group.getGroupTag());
}

TEST(FieldGroupReentry, RemovingByIndexDoesNotAskForTheCount) {
    class Liar final : public ZANFieldGroup {
    public:
        int getGroupCount(int) const override { return 77; }
    };
    Liar group;
    group.addGroup(groupOf(5));
    group.addGroup(groupOf(5));
    group.removeGroup(5, 77);
    EXPECT_TRUE(group.getGroup(5, 1));
    group.removeGroup(5, 2);
    EXPECT_FALSE(group.getGroup(5, 1));
    EXPECT_TRUE(group.getGroup(5, 0));
}

TEST(FieldGroupReentry, DeepNestingEndsWithoutDeepCalls) {
    constexpr int levels = 200'000;
    Group top = groupOf(1);
    Group level = top;
    for (int i = 0; i < levels; ++i) {
        Group const inner(new ZANFieldGroup(1));
        level->addGroup(inner);
        level = inner;
    }
    level.reset();
    top.reset();
    EXPECT_FALSE(top);
}

} // namespace
