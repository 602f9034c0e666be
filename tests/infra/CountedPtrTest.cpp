#include "infra/counted_ptr.h"

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <type_traits>
#include <utility>
#include <vector>

namespace {

struct Tracked {
    explicit Tracked(int& destroyed) : destroyed_(destroyed) {}
    Tracked(Tracked const&) = delete;
    Tracked& operator=(Tracked const&) = delete;
    virtual ~Tracked() { ++destroyed_; }

private:
    int& destroyed_;
};

struct Node {
    counted_ptr<Node> next;
    std::function<void()> atEnd = [] {};
    ~Node() { atEnd(); }
};

TEST(CountedPtr, DestroysTheObjectExactlyOnceWithTheLastRelease) {
    int destroyed = 0;
    counted_ptr<Tracked> first(new Tracked(destroyed));
    counted_ptr<Tracked> second(first);
    first.reset();
    EXPECT_EQ(0, destroyed);
    second.reset();
    EXPECT_EQ(1, destroyed);
}

TEST(CountedPtr, DestroysADerivedObjectThroughItsVirtualDestructor) {
    struct Derived : Tracked {
        using Tracked::Tracked;
        std::vector<int> more = {1, 2, 3};
    };
    int destroyed = 0;
    counted_ptr<Tracked>(new Derived(destroyed));
    EXPECT_EQ(1, destroyed);
}

TEST(CountedPtr, MadeFromNullIsEmptyAndSoAreItsCopies) {
    counted_ptr<int> const empty(static_cast<int*>(nullptr));
    counted_ptr<int> const copy(empty);
    EXPECT_FALSE(empty);
    EXPECT_FALSE(copy);
    EXPECT_EQ(0u, empty.use_count());
    EXPECT_EQ(nullptr, copy.get());
}

TEST(CountedPtr, CountsItsCopies) {
    counted_ptr<int> const pointer(new int(5));
    EXPECT_EQ(1u, pointer.use_count());
    {
        counted_ptr<int> const copy(pointer);
        EXPECT_EQ(2u, pointer.use_count());
        EXPECT_EQ(5, *copy);
    }
    EXPECT_EQ(1u, pointer.use_count());
}

TEST(CountedPtr, AssignedToItselfKeepsItsCount) {
    counted_ptr<int> pointer(new int(1));
    auto& same = pointer;
    pointer = same;
    EXPECT_EQ(1u, pointer.use_count());
    pointer = std::move(same);
    EXPECT_EQ(1u, pointer.use_count());
    EXPECT_EQ(1, *pointer);
}

TEST(CountedPtr, AssignedFromASharingPointerKeepsCountAndObject) {
    int destroyed = 0;
    counted_ptr<Tracked> first(new Tracked(destroyed));
    counted_ptr<Tracked> second(first);
    first = second;
    EXPECT_EQ(2u, first.use_count());
    EXPECT_EQ(0, destroyed);
}

TEST(CountedPtr, MovingLeavesTheSourceEmpty) {
    counted_ptr<int> source(new int(7));
    counted_ptr<int> constructed(std::move(source));
    EXPECT_FALSE(source); // NOLINT(bugprone-use-after-move): this is what is tested
    counted_ptr<int> assigned;
    assigned = std::move(constructed);
    EXPECT_FALSE(constructed); // NOLINT(bugprone-use-after-move)
    EXPECT_EQ(1u, assigned.use_count());
    EXPECT_EQ(7, *assigned);
}

TEST(CountedPtr, LetsGoOfTheOldObjectBeforeItShowsTheNewOne) {
    counted_ptr<Node> pointer(new Node);
    counted_ptr<Node> const incoming(new Node);
    Node const* seen = incoming.get();
    pointer->atEnd = [&] { seen = pointer.get(); };
    pointer = incoming;
    EXPECT_EQ(nullptr, seen);
    EXPECT_EQ(incoming, pointer);
}

TEST(CountedPtr, AssignsFromASourceInsideTheObjectThatIsLetGo) {
    counted_ptr<Node> head(new Node);
    head->next = counted_ptr<Node>(new Node);
    Node* const second = head->next.get();
    head = head->next;
    EXPECT_EQ(second, head.get());
    EXPECT_EQ(1u, head.use_count());

    head->next = counted_ptr<Node>(new Node);
    Node* const third = head->next.get();
    head = std::move(head->next);
    EXPECT_EQ(third, head.get());
}

TEST(CountedPtr, IsEmptyBeforeTheDestructorRunsOnReset) {
    counted_ptr<Node> pointer(new Node);
    bool empty = false;
    pointer->atEnd = [&] { empty = !pointer; };
    pointer.reset();
    EXPECT_TRUE(empty);
}

TEST(CountedPtr, ComparesByObjectAddressAndEmptyOnesAreEqual) {
    counted_ptr<int> const one(new int(1));
    counted_ptr<int> const same(one);
    counted_ptr<int> const other(new int(1));
    counted_ptr<int> const empty;
    EXPECT_TRUE(one == same);
    EXPECT_TRUE(one != other);
    EXPECT_TRUE(empty == counted_ptr<int>(nullptr));
    EXPECT_TRUE(empty == nullptr);
    EXPECT_TRUE(one != nullptr);
}

TEST(CountedPtr, SwapsObjects) {
    counted_ptr<int> one(new int(1));
    counted_ptr<int> two(new int(2));
    one.swap(two);
    EXPECT_EQ(2, *one);
    swap(one, two);
    EXPECT_EQ(1, *one);
}

TEST(CountedPtr, ConvertsFromNullImplicitlyAndFromAnObjectOnlyExplicitly) {
    static_assert(std::is_convertible_v<std::nullptr_t, counted_ptr<int>>);
    static_assert(!std::is_convertible_v<int*, counted_ptr<int>>);
    static_assert(std::is_constructible_v<counted_ptr<int>, int*>);
    static_assert(!std::is_convertible_v<counted_ptr<int>, bool>);
    static_assert(std::is_nothrow_move_constructible_v<counted_ptr<int>>);
}

TEST(CountedPtr, DestroysWhatItHoldsThroughThePolicy) {
    struct Policy {
        static void destroy(int* object) { *object = 42; }
    };
    int object = 0;
    counted_ptr<int, Policy>{&object};
    EXPECT_EQ(42, object);
}

TEST(CountedPtr, DestroysNothingWhenItsBlockHasNoObject) {
    static int destroyed;
    struct Policy {
        static void destroy(int*) { ++destroyed; }
    };
    destroyed = 0;
    int object = 0;
    using Pointer = counted_ptr<int, Policy>;
    auto const withoutObject = [&object] {
        Pointer pointer(&object);
        zan::CountBlock* block;
        std::memcpy(&block, &pointer, sizeof block);
        block->object = nullptr;
        return pointer;
    };
    {
        Pointer const released = withoutObject();
        EXPECT_TRUE(!released);
        EXPECT_EQ(1U, released.use_count());
    }
    withoutObject().reset();
    Pointer assigned = withoutObject();
    assigned = Pointer();
    assigned = withoutObject();
    Pointer const empty;
    assigned = empty;
    EXPECT_EQ(0, destroyed);
}

} // namespace
