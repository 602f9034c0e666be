#include "message/IZANFieldGroupWalker.h"
#include "support/Slots.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

namespace {

using Steps = std::vector<std::string>;

std::string nameOf(ZANFieldGroup const& group) {
    return std::to_string(group.getGroupTag());
}

/// Writes down the callbacks with the group tag, and the tag of the field.
class RecordingWalker final : public IZANFieldGroupWalker {
public:
    Steps steps;

    void startGroup(ZANFieldGroup const& group) override {
        steps.push_back("start " + nameOf(group));
    }
    void processField(ZANField const& field, ZANFieldGroup const& group) override {
        steps.push_back("field " + std::to_string(field.getTag()) + " of " + nameOf(group));
    }
    void endGroup(ZANFieldGroup const& group) override { steps.push_back("end " + nameOf(group)); }
};

counted_ptr<ZANFieldGroup> groupWithField(int groupTag, int fieldTag) {
    counted_ptr<ZANFieldGroup> group(new ZANFieldGroup(groupTag));
    group->setFieldValue(fieldTag, 1);
    return group;
}

TEST(Walker, VisitsSubGroupsBeforeTheFieldsOfTheirParent) {
    ZANFieldGroup top("D", "FIX.4.2");
    top.addGroup(groupWithField(100, 200));
    RecordingWalker walker;
    walker.walkThrough(top);
    EXPECT_EQ(walker.steps, (Steps{"start 0", "start 100", "field 200 of 100", "end 100",
                                   "field 8 of 0", "field 35 of 0", "end 0"}));
}

TEST(Walker, OnlyEntersAndLeavesAnEmptyGroup) {
    RecordingWalker walker;
    walker.walkThrough(ZANFieldGroup(7));
    EXPECT_EQ(walker.steps, (Steps{"start 7", "end 7"}));
}

TEST(Walker, TakesSubGroupsByTagThenInTheOrderOfAdding) {
    ZANFieldGroup top;
    top.addGroup(groupWithField(300, 1));
    top.addGroup(groupWithField(100, 2));
    top.addGroup(groupWithField(300, 3));
    RecordingWalker walker;
    walker.walkThrough(top);
    EXPECT_EQ(walker.steps, (Steps{"start 0", "start 100", "field 2 of 100", "end 100", "start 300",
                                   "field 1 of 300", "end 300", "start 300", "field 3 of 300",
                                   "end 300", "end 0"}));
}

TEST(Walker, GoesDownToGroupsInsideGroups) {
    ZANFieldGroup top;
    auto const middle = groupWithField(100, 1);
    middle->addGroup(groupWithField(200, 2));
    top.addGroup(middle);
    RecordingWalker walker;
    walker.walkThrough(top);
    EXPECT_EQ(walker.steps, (Steps{"start 0", "start 100", "start 200", "field 2 of 200", "end 200",
                                   "field 1 of 100", "end 100", "end 0"}));
}

TEST(Walker, HandsOutTheVeryObjectsOfTheGroup) {
    struct Keeper final : IZANFieldGroupWalker {
        ZANField const* field = nullptr;
        ZANFieldGroup const* group = nullptr;
        void startGroup(ZANFieldGroup const&) override {}
        void processField(ZANField const& f, ZANFieldGroup const& g) override {
            field = &f;
            group = &g;
        }
        void endGroup(ZANFieldGroup const&) override {}
    } keeper;
    auto const group = groupWithField(0, 5);
    keeper.walkThrough(*group);
    EXPECT_EQ(keeper.field, group->getField(5).get());
    EXPECT_EQ(keeper.group, group.get());
}

TEST(Walker, OverrideGetsTheNestedGroupsToo) {
    struct Counter final : IZANFieldGroupWalker {
        int walked = 0;
        void walkThrough(ZANFieldGroup const& group) override {
            ++walked;
            IZANFieldGroupWalker::walkThrough(group);
        }
        void startGroup(ZANFieldGroup const&) override {}
        void processField(ZANField const&, ZANFieldGroup const&) override {}
        void endGroup(ZANFieldGroup const&) override {}
    } counter;
    ZANFieldGroup top;
    top.addGroup(groupWithField(100, 1));
    top.addGroup(groupWithField(100, 2));
    counter.walkThrough(top);
    EXPECT_EQ(counter.walked, 3);
}

TEST(Walker, ExceptionOfACallbackEndsTheWalk) {
    struct Thrower final : IZANFieldGroupWalker {
        bool ended = false;
        void startGroup(ZANFieldGroup const&) override {}
        void processField(ZANField const&, ZANFieldGroup const&) override {
            throw std::runtime_error("enough");
        }
        void endGroup(ZANFieldGroup const&) override { ended = true; }
    } thrower;
    EXPECT_THROW(thrower.walkThrough(ZANFieldGroup("D")), std::runtime_error);
    EXPECT_FALSE(thrower.ended);
}

TEST(Walker, IsNotDeletedThroughItsInterface) {
    EXPECT_FALSE(std::has_virtual_destructor_v<IZANFieldGroupWalker>);
    EXPECT_FALSE(std::is_destructible_v<IZANFieldGroupWalker>);
    EXPECT_TRUE(std::is_copy_constructible_v<RecordingWalker>);
    EXPECT_TRUE(std::is_copy_assignable_v<RecordingWalker>);
}

TEST(WalkerSlots, BeginWithTheWalkItself) {
    EXPECT_EQ(slotOf(&IZANFieldGroupWalker::walkThrough), 0u);
    EXPECT_EQ(slotOf(&IZANFieldGroupWalker::startGroup), 1u);
    EXPECT_EQ(slotOf(&IZANFieldGroupWalker::processField), 2u);
    EXPECT_EQ(slotOf(&IZANFieldGroupWalker::endGroup), 3u);
}

} // namespace
