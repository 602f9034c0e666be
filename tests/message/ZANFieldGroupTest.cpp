#include "message/ZANFieldGroup.h"

#include "infra/InfraException.h"
#include "support/Slots.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

counted_ptr<ZANFieldGroup> newGroup(int tag) {
    return counted_ptr<ZANFieldGroup>(new ZANFieldGroup(tag));
}

counted_ptr<ZANField> newField(int tag, std::string const& text) {
    Value value;
    value.setString(text);
    return counted_ptr<ZANField>(new ZANField(tag, Value::STRING, value));
}

std::vector<int> tagsOf(ZANFieldGroup const& group) {
    std::vector<int> tags;
    for (auto const fields = group.fieldIterator(); fields->hasNext(); fields->next()) {
        tags.push_back(fields->current()->getTag());
    }
    return tags;
}

std::string textOf(ZANFieldGroup const& group, int tag) {
    return group.getField(tag)->getValue().asString();
}

TEST(ZANFieldGroup, StartsEmptyWithTheGivenGroupTag) {
    ZANFieldGroup const group;
    EXPECT_EQ(0, group.getGroupTag());
    EXPECT_TRUE(group.empty());
    EXPECT_TRUE(group.isFieldsEmpty());
    EXPECT_TRUE(group.isGroupsEmpty());
    EXPECT_EQ(453, ZANFieldGroup(453).getGroupTag());
}

TEST(ZANFieldGroup, MessageBodiesHoldTypeAndVersion) {
    ZANFieldGroup const typed("D");
    EXPECT_EQ("D", textOf(typed, 35));
    EXPECT_EQ(std::vector<int>({35}), tagsOf(typed));
    ZANFieldGroup const versioned("D", "FIX.4.4");
    EXPECT_EQ("FIX.4.4", textOf(versioned, 8));
    EXPECT_EQ(std::vector<int>({8, 35}), tagsOf(versioned));
    EXPECT_EQ(0, versioned.getGroupTag());
}

TEST(ZANFieldGroup, StoresEachTypeUnderItsCode) {
    ZANFieldGroup group;
    group.setFieldValue(1, 'c');
    group.setFieldValue(2, true);
    group.setFieldValue(3, 2.5);
    group.setFieldValue(4, 4L);
    group.setFieldValue(5, 5);
    group.setFieldValue(6, std::string("text"));
    group.setFieldValue(7, "literal");
    Value value;
    value.setBool(false);
    group.setFieldValue(8, value);
    int const types[] = {24, 11, 2, 1, 1, 3, 3, 11};
    for (int tag = 1; tag <= 8; ++tag) {
        EXPECT_EQ(types[tag - 1], group.getField(tag)->getType()) << tag;
        EXPECT_EQ(types[tag - 1], group.getField(tag)->getValue().getType()) << tag;
    }
    EXPECT_EQ('c', group.getField(1)->getValue().asChar());
    EXPECT_TRUE(group.getField(2)->getValue().asBool());
    EXPECT_EQ(2.5, group.getField(3)->getValue().asDouble());
    EXPECT_EQ(4, group.getField(4)->getValue().asLong());
    EXPECT_EQ(5, group.getField(5)->getValue().asInt());
    EXPECT_EQ("text", textOf(group, 6));
    EXPECT_EQ("literal", textOf(group, 7));
}

TEST(ZANFieldGroup, RefusesANullPointerAsText) {
    ZANFieldGroup group;
    EXPECT_THROW(group.setFieldValue(58, static_cast<char const*>(nullptr)), InfraException);
    EXPECT_TRUE(group.empty());
}

TEST(ZANFieldGroup, AnExistingFieldKeepsItsTypeCodeAndItsObject) {
    ZANFieldGroup group;
    group.setFieldValue(10, 5);
    auto const field = group.getField(10);
    group.setFieldValue(10, std::string("five"));
    EXPECT_EQ(field, group.getField(10));
    EXPECT_EQ(1, field->getType());
    EXPECT_EQ("five", field->getValue().asStringView());
    EXPECT_EQ(std::vector<int>({10}), tagsOf(group));
}

TEST(ZANFieldGroup, AddingAFieldReplacesTheOneWithItsTag) {
    ZANFieldGroup group;
    group.addField(newField(1, "first"));
    auto const second = newField(1, "second");
    group.addField(second);
    EXPECT_EQ(second, group.getField(1));
    EXPECT_EQ(std::vector<int>({1}), tagsOf(group));
}

TEST(ZANFieldGroup, IgnoresEmptyPointers) {
    ZANFieldGroup group;
    group.addField(nullptr);
    group.addGroup(nullptr);
    EXPECT_TRUE(group.empty());
}

TEST(ZANFieldGroup, SharesTheFieldObjects) {
    ZANFieldGroup group;
    auto const field = newField(1, "before");
    group.addField(field);
    Value after;
    after.setString("after");
    field->setValue(after);
    EXPECT_EQ("after", textOf(group, 1));
}

TEST(ZANFieldGroup, AnswersWhatIsAbsentWithEmptyPointers) {
    ZANFieldGroup group;
    group.addGroup(newGroup(100));
    EXPECT_FALSE(group.getField(1));
    EXPECT_FALSE(group.isFieldPresent(1));
    EXPECT_FALSE(group.getGroup(200, 0));
    EXPECT_FALSE(group.getGroup(100, 1));
    EXPECT_FALSE(group.getGroup(100, -1));
    EXPECT_EQ(0, group.getGroupCount(200));
    EXPECT_FALSE(group.isGroupPresent(200));
    EXPECT_FALSE(group.groupIterator(200));
    ZANFieldGroup const& constant = group;
    EXPECT_FALSE(constant.groupIterator(200));
    EXPECT_FALSE(constant.getGroup(100, 1));
}

TEST(ZANFieldGroup, RemovesFields) {
    ZANFieldGroup group;
    group.setFieldValue(1, 1);
    group.setFieldValue(2, 2);
    group.removeField(1);
    group.removeField(7);
    EXPECT_EQ(std::vector<int>({2}), tagsOf(group));
    group.removeField(2);
    EXPECT_TRUE(group.isFieldsEmpty());
}

TEST(ZANFieldGroup, VisitsFieldsByAscendingTag) {
    ZANFieldGroup group;
    for (int const tag : {55, -3, 11, 16580, 0, 8}) {
        group.setFieldValue(tag, tag);
    }
    EXPECT_EQ(std::vector<int>({-3, 0, 8, 11, 55, 16580}), tagsOf(group));
}

TEST(ZANFieldGroup, IteratorsOverAnEmptyGroupHaveNoElement) {
    ZANFieldGroup group;
    EXPECT_FALSE(group.fieldIterator()->hasNext());
    ASSERT_TRUE(group.groupIterator());
    EXPECT_FALSE(group.groupIterator()->hasNext());
}

TEST(ZANFieldGroup, IteratorsHandOutTheElementItself) {
    ZANFieldGroup group;
    group.setFieldValue(1, 1);
    auto const fields = group.fieldIterator();
    auto const replacement = newField(1, "new");
    fields->current() = replacement;
    EXPECT_EQ(replacement, group.getField(1));
}

TEST(ZANFieldGroup, VisitsAllSubGroupsByTagAndThenInTheirOrder) {
    ZANFieldGroup group;
    auto const first = newGroup(300);
    auto const second = newGroup(100);
    auto const third = newGroup(300);
    group.addGroup(first);
    group.addGroup(second);
    group.addGroup(third);
    std::vector<ZANFieldGroup*> visited;
    for (auto const groups = group.groupIterator(); groups->hasNext(); groups->next()) {
        visited.push_back(groups->current().get());
    }
    EXPECT_EQ((std::vector<ZANFieldGroup*>{second.get(), first.get(), third.get()}), visited);
}

TEST(ZANFieldGroup, VisitsTheInstancesOfOneTagAsTheyAre) {
    ZANFieldGroup group;
    group.addGroup(newGroup(100));
    group.addGroup(newGroup(100));
    group.addGroup(newGroup(200));
    auto const groups = group.groupIterator(100);
    EXPECT_EQ(group.getGroup(100, 0), groups->current());
    groups->next();
    ASSERT_TRUE(groups->hasNext());
    EXPECT_EQ(group.getGroup(100, 1), groups->current());
    groups->next();
    EXPECT_FALSE(groups->hasNext());
}

TEST(ZANFieldGroup, TheIteratorOverAllSubGroupsHoldsWhatItWillVisit) {
    ZANFieldGroup group;
    group.addGroup(newGroup(100));
    group.addGroup(newGroup(200));
    auto const groups = group.groupIterator();
    group.removeGroup(100);
    group.clear();
    int visited = 0;
    for (; groups->hasNext(); groups->next()) {
        EXPECT_EQ(++visited * 100, groups->current()->getGroupTag());
    }
    EXPECT_EQ(2, visited);
}

TEST(ZANFieldGroup, SubGroupsAreSharedAndFiledUnderTheTagTheyHaveWhenAdded) {
    ZANFieldGroup group;
    auto const instance = newGroup(100);
    group.addGroup(instance);
    instance->setGroupTag(200);
    EXPECT_EQ(instance, group.getGroup(100, 0));
    EXPECT_EQ(0, group.getGroupCount(200));
    EXPECT_EQ(1, group.getGroupCount(100));
    EXPECT_FALSE(group.isGroupsEmpty());
    EXPECT_FALSE(group.empty());
}

TEST(ZANFieldGroup, RemovesAllInstancesOfATag) {
    ZANFieldGroup group;
    group.addGroup(newGroup(100));
    group.addGroup(newGroup(100));
    group.removeGroup(200);
    EXPECT_EQ(2, group.getGroupCount(100));
    group.removeGroup(100);
    EXPECT_TRUE(group.isGroupsEmpty());
}

TEST(ZANFieldGroup, RemovingByIndexStopsOnlyAtTheCountAndReleasesTheLast) {
    ZANFieldGroup group;
    auto const first = newGroup(100);
    group.addGroup(first);
    group.addGroup(newGroup(100));
    for (int const index : {-1, 0, 1, 3, 1000}) {
        group.removeGroup(100, index);
        EXPECT_EQ(2, group.getGroupCount(100)) << index;
    }
    group.removeGroup(200, 0);
    group.removeGroup(100, 2);
    EXPECT_EQ(1, group.getGroupCount(100));
    EXPECT_EQ(first, group.getGroup(100, 0));
    group.removeGroup(100, 1);
    EXPECT_FALSE(group.isGroupPresent(100));
    EXPECT_TRUE(group.isGroupsEmpty());
}

TEST(ZANFieldGroup, ErasesTheInstanceAtAnIndex) {
    ZANFieldGroup group;
    auto const first = newGroup(100);
    auto const last = newGroup(100);
    group.addGroup(first);
    group.addGroup(newGroup(100));
    group.addGroup(last);
    EXPECT_FALSE(group.eraseGroup(100, 3));
    EXPECT_FALSE(group.eraseGroup(100, -1));
    EXPECT_FALSE(group.eraseGroup(200, 0));
    EXPECT_TRUE(group.eraseGroup(100, 1));
    EXPECT_EQ(first, group.getGroup(100, 0));
    EXPECT_EQ(last, group.getGroup(100, 1));
    EXPECT_TRUE(group.eraseGroup(100, 0));
    EXPECT_TRUE(group.eraseGroup(100, 0));
    EXPECT_TRUE(group.isGroupsEmpty());
}

TEST(ZANFieldGroup, ClearingRemovesEverythingAndResetsTheGroupTag) {
    ZANFieldGroup group(100);
    group.setFieldValue(1, 1);
    group.addGroup(newGroup(200));
    group.clear();
    EXPECT_EQ(0, group.getGroupTag());
    EXPECT_TRUE(group.empty());
}

TEST(ZANFieldGroup, SetsProtocolVersionAndMessageType) {
    ZANFieldGroup group;
    group.setProtocolVersion("FIX.4.2");
    group.setMsgType("8");
    EXPECT_EQ("FIX.4.2", textOf(group, 8));
    EXPECT_EQ("8", textOf(group, 35));
}

counted_ptr<ZANFieldGroup> deepGroup() {
    auto const group = newGroup(7);
    group->setFieldValue(11, "order-1");
    for (int i = 0; i < 3; ++i) {
        auto const party = newGroup(453);
        party->setFieldValue(448, "party " + std::to_string(i));
        party->addGroup(newGroup(802));
        party->getGroup(802, 0)->setFieldValue(523, "sub " + std::to_string(i));
        group->addGroup(party);
    }
    return group;
}

TEST(ZANFieldGroup, ACopyIsUnaffectedByChangesToItsSource) {
    auto const source = deepGroup();
    ZANFieldGroup const copy(*source);
    source->setFieldValue(11, "order-2");
    source->getGroup(453, 1)->getGroup(802, 0)->setFieldValue(523, "changed");
    source->getGroup(453, 1)->setFieldValue(448, "changed");
    source->removeGroup(453);
    EXPECT_EQ(7, copy.getGroupTag());
    EXPECT_EQ("order-1", textOf(copy, 11));
    ASSERT_EQ(3, copy.getGroupCount(453));
    for (int i = 0; i < 3; ++i) {
        auto const party = copy.getGroup(453, i);
        EXPECT_EQ("party " + std::to_string(i), textOf(*party, 448));
        EXPECT_EQ("sub " + std::to_string(i), textOf(*party->getGroup(802, 0), 523));
    }
}

TEST(ZANFieldGroup, AssigningReplacesEverything) {
    ZANFieldGroup target(1);
    target.setFieldValue(99, "old");
    target.addGroup(newGroup(555));
    target = *deepGroup();
    EXPECT_EQ(7, target.getGroupTag());
    EXPECT_EQ(std::vector<int>({11}), tagsOf(target));
    EXPECT_FALSE(target.isGroupPresent(555));
    EXPECT_EQ(3, target.getGroupCount(453));
}

TEST(ZANFieldGroup, AssignedToItselfIsUnchanged) {
    auto const group = deepGroup();
    auto const& same = *group;
    auto const field = group->getField(11);
    *group = same;
    EXPECT_EQ(field, group->getField(11));
    EXPECT_EQ(3, group->getGroupCount(453));
}

TEST(ZANFieldGroup, CanBeAssignedFromItsOwnSubGroup) {
    auto const group = deepGroup();
    *group = *group->getGroup(453, 2);
    EXPECT_EQ(453, group->getGroupTag());
    EXPECT_EQ("party 2", textOf(*group, 448));
    EXPECT_EQ("sub 2", textOf(*group->getGroup(802, 0), 523));
}

TEST(ZANFieldGroup, CopiesAreFiledUnderTheirOwnTags) {
    ZANFieldGroup source;
    auto const instance = newGroup(100);
    source.addGroup(instance);
    instance->setGroupTag(50);
    auto const field = newField(10, "x");
    source.addField(field);
    field->setTag(5);
    ZANFieldGroup const copy(source);
    EXPECT_EQ(1, copy.getGroupCount(50));
    EXPECT_FALSE(copy.isGroupPresent(100));
    EXPECT_TRUE(copy.isFieldPresent(5));
    EXPECT_FALSE(copy.isFieldPresent(10));
}

TEST(ZANFieldGroup, ManyFieldsInAnyOrderStaySortedAndFound) {
    int const count = 3000;
    for (int const step : {1, 7, count - 1}) {
        ZANFieldGroup group;
        for (int i = 0; i < count; ++i) {
            group.setFieldValue(i * step % count, i * step % count);
        }
        auto const tags = tagsOf(group);
        ASSERT_EQ(static_cast<std::size_t>(count), tags.size());
        for (int i = 0; i < count; ++i) {
            ASSERT_EQ(i, tags[static_cast<std::size_t>(i)]);
            ASSERT_EQ(i, group.getField(i)->getValue().asInt());
        }
        EXPECT_FALSE(group.getField(count));
        ZANFieldGroup copy(group);
        for (int i = 0; i < count; i += 2) {
            copy.removeField(i);
        }
        for (int i = 0; i < count; ++i) {
            ASSERT_EQ(i % 2 == 1, copy.isFieldPresent(i));
        }
        for (int i = 1; i < count; i += 2) {
            copy.removeField(i);
        }
        EXPECT_TRUE(copy.isFieldsEmpty());
    }
}

class RecordingGroup : public ZANFieldGroup {
public:
    using ZANFieldGroup::operator=;
    using ZANFieldGroup::setFieldValue;
    RecordingGroup() = default;

    void addField(counted_ptr<ZANField> field) override {
        calls += "addField ";
        ZANFieldGroup::addField(field);
    }
    void setFieldValue(int tag, Value const& value) override {
        calls += "setFieldValue ";
        ZANFieldGroup::setFieldValue(tag, value);
    }
    void setFieldValue(int tag, long value) override {
        calls += "long ";
        ZANFieldGroup::setFieldValue(tag, value);
    }
    void setGroupTag(int tag) override {
        calls += "setGroupTag ";
        ZANFieldGroup::setGroupTag(tag);
    }
    void addGroup(counted_ptr<ZANFieldGroup> group) override {
        calls += "addGroup ";
        ZANFieldGroup::addGroup(group);
    }
    counted_ptr<ZANField> getField(int tag) override {
        calls += "getField ";
        return ZANFieldGroup::getField(tag);
    }

    std::string calls;
};

TEST(ZANFieldGroup, TypedSettersEndInTheVirtualGeneralSetter) {
    RecordingGroup group;
    group.setFieldValue(1, 2.5);
    EXPECT_EQ("setFieldValue getField addField ", group.calls);
    group.calls.clear();
    group.setFieldValue(1, 2.75);
    EXPECT_EQ("setFieldValue getField ", group.calls);
    group.calls.clear();
    group.setFieldValue(2, 5);
    EXPECT_EQ("long setFieldValue getField addField ", group.calls);
}

TEST(ZANFieldGroup, AssignmentGoesThroughTheVirtualOperations) {
    RecordingGroup group;
    group.setFieldValue(1, 'x');
    group.calls.clear();
    ZANFieldGroup source(9);
    source.setFieldValue(1, 1);
    source.addGroup(newGroup(100));
    group.ZANFieldGroup::operator=(source);
    EXPECT_EQ("setGroupTag setGroupTag addField addGroup ", group.calls);
    EXPECT_EQ(9, group.getGroupTag());
}

TEST(ZANFieldGroup, CopiesOfDerivedFieldsArePlainFieldsWithTheSameContent) {
    struct Derived : ZANField {
        using ZANField::ZANField;
        int getTag() const override { return 77; }
    };
    Value value;
    value.setLong(1);
    ZANFieldGroup source;
    source.addField(counted_ptr<ZANField>(new Derived(1, Value::LONG, value)));
    ZANFieldGroup const copy(source);
    ASSERT_TRUE(copy.isFieldPresent(77));
    EXPECT_EQ(nullptr, dynamic_cast<Derived*>(copy.getField(77).get()));
}

TEST(ZANFieldGroup, AFieldMayLookAtItsGroupWhileTheGroupIsCleared) {
    struct Curious : ZANField {
        Curious(ZANFieldGroup& group, bool& sawEmpty) : group_(group), sawEmpty_(sawEmpty) {
            setTag(1);
        }
        ~Curious() override { sawEmpty_ = group_.isFieldsEmpty() && !group_.getField(1); }
        ZANFieldGroup& group_;
        bool& sawEmpty_;
    };
    for (bool const clear : {true, false}) {
        ZANFieldGroup group;
        bool sawEmpty = false;
        group.addField(counted_ptr<ZANField>(new Curious(group, sawEmpty)));
        clear ? group.clear() : group.removeField(1);
        EXPECT_TRUE(sawEmpty);
    }
}

} // namespace
