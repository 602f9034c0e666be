#include "server/engine/Subscribers.h"

#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <new>
#include <string>
#include <thread>

namespace {

using namespace zan::server;
using namespace std::chrono_literals;

class Named : public IZANEventListener {
public:
    Named(char letter, int& alive) : name(letter), alive_(alive) { ++alive_; }
    ~Named() override { --alive_; }
    void processEvent(counted_ptr<ZANEvent>) override {}

    char const name;

private:
    int& alive_;
};

class SubscribersTest : public testing::Test {
protected:
    counted_ptr<IZANEventListener> make(char name) {
        return counted_ptr<IZANEventListener>(new Named(name, alive));
    }

    std::string called(bool EventKinds::*kind) {
        std::string names;
        subscribers.forEach(kind, [&](Subscriber const& subscriber) {
            names += static_cast<Named&>(*subscriber.plain).name;
        });
        return names;
    }

    int alive = 0;
    Subscribers subscribers;
    static constexpr EventKinds all{true, true, true};
};

TEST_F(SubscribersTest, AreCalledInTheirOrderForTheirKinds) {
    auto const a = make('a');
    auto const b = make('b');
    subscribers.add(a, {false, true, false});
    subscribers.add(b, {true, true, false});
    EXPECT_EQ(called(&EventKinds::app), "ab");
    EXPECT_EQ(called(&EventKinds::admin), "b");
    EXPECT_EQ(called(&EventKinds::state), "");
}

TEST_F(SubscribersTest, AreHeldOnceHoweverOftenTheyAreAdded) {
    auto const a = make('a');
    subscribers.add(a, {true, false, false});
    subscribers.add(a, {false, true, false});
    EXPECT_EQ(a.use_count(), 2u);
    EXPECT_EQ(called(&EventKinds::admin), "a");
    EXPECT_EQ(called(&EventKinds::app), "a");
}

TEST_F(SubscribersTest, AreLetGoWithTheirLastKind) {
    auto a = make('a');
    subscribers.add(a, all);
    subscribers.remove(a, {true, false, true}, 0ms);
    EXPECT_EQ(called(&EventKinds::app), "a");
    EXPECT_EQ(called(&EventKinds::admin), "");
    subscribers.remove(a, all, 0ms);
    EXPECT_EQ(a.use_count(), 1u);
}

TEST_F(SubscribersTest, LiveAsLongAsTheyAreSubscribed) {
    auto a = make('a');
    subscribers.add(a, all);
    auto* const raw = a.get();
    a.reset();
    EXPECT_EQ(alive, 1);
    EXPECT_EQ(called(&EventKinds::app), "a");
    EXPECT_NE(raw, nullptr);
}

TEST_F(SubscribersTest, MayLeaveInsideACall) {
    auto a = make('a');
    auto const b = make('b');
    subscribers.add(a, all);
    subscribers.add(b, all);
    std::string names;
    subscribers.forEach(&EventKinds::app, [&](Subscriber const& subscriber) {
        char const name = static_cast<Named&>(*subscriber.plain).name;
        names += name;
        if (name == 'a') {
            subscribers.remove(a, all, 0ms);
            a.reset();
            EXPECT_EQ(alive, 2) << "it ended inside its own call";
        }
    });
    EXPECT_EQ(names, "ab");
    EXPECT_EQ(alive, 1);
    EXPECT_EQ(called(&EventKinds::app), "b");
}

TEST_F(SubscribersTest, AreNotCalledOnceTheyAreRemoved) {
    auto const a = make('a');
    auto b = make('b');
    subscribers.add(a, all);
    subscribers.add(b, all);
    std::string names;
    subscribers.forEach(&EventKinds::app, [&](Subscriber const& subscriber) {
        names += static_cast<Named&>(*subscriber.plain).name;
        subscribers.remove(b, all, 0ms);
        b.reset();
        EXPECT_EQ(alive, 1);
    });
    EXPECT_EQ(names, "a");
}

TEST_F(SubscribersTest, AreNotHeldByACallOnceTheyAreRemoved) {
    auto a = make('a');
    subscribers.add(a, all);
    std::promise<void> called;
    std::atomic<bool> hasReturned{false};
    std::thread delivering([&] {
        subscribers.forEach(&EventKinds::app, [&](Subscriber const&) {
            called.set_value();
            std::this_thread::sleep_for(50ms);
            hasReturned = true;
        });
    });
    called.get_future().wait();
    subscribers.remove(a, all, 10s);
    EXPECT_TRUE(hasReturned);
    EXPECT_EQ(a.use_count(), 1u);
    a.reset();
    EXPECT_EQ(alive, 0);
    delivering.join();
}

TEST_F(SubscribersTest, AreWaitedForOnlySoLong) {
    auto const a = make('a');
    subscribers.add(a, all);
    std::promise<void> called;
    std::promise<void> mayReturn;
    std::thread delivering([&] {
        subscribers.forEach(&EventKinds::app, [&](Subscriber const&) {
            called.set_value();
            mayReturn.get_future().wait();
        });
    });
    called.get_future().wait();
    subscribers.remove(a, all, 20ms);
    EXPECT_EQ(a.use_count(), 2u) << "the call still needs it";
    mayReturn.set_value();
    delivering.join();
    EXPECT_EQ(a.use_count(), 1u);
}

TEST_F(SubscribersTest, AreLetGoTogetherAtTheEnd) {
    auto const a = make('a');
    subscribers.add(a, all);
    subscribers.add(make('b'), all);
    subscribers.takeAll();
    EXPECT_EQ(a.use_count(), 1u);
    EXPECT_EQ(alive, 1);
    EXPECT_EQ(called(&EventKinds::app), "");
}

TEST_F(SubscribersTest, OfTwoConnectionsThatEndAtTheSameTimeMayBeTheSame) {
    for (int i = 0; i < 100; ++i) {
        Subscribers one;
        Subscribers other;
        auto listener = make('a');
        one.add(listener, all);
        other.add(listener, all);
        listener.reset();
        std::thread first([&] { one.takeAll(); });
        std::thread second([&] { other.takeAll(); });
        first.join();
        second.join();
        EXPECT_EQ(alive, 0);
    }
}

// The count is one, and belongs to one lock, whichever connections take the listener up.
TEST_F(SubscribersTest, OfTwoConnectionsAreCountedRightWhileBothAddAndRemoveThem) {
    constexpr int rounds = 100000;
    Subscribers one;
    Subscribers other;
    auto listener = make('a');
    auto const change = [&](Subscribers& which) {
        for (int i = 0; i < rounds; ++i) {
            which.add(listener, all);
            which.remove(listener, all, 0ms);
        }
    };
    std::thread first([&] { change(one); });
    std::thread second([&] { change(other); });
    first.join();
    second.join();
    EXPECT_EQ(listener.use_count(), 1u);
    EXPECT_EQ(alive, 1);
}

TEST_F(SubscribersTest, AreNotBeingCalledAfterACallThatThrew) {
    auto a = make('a');
    subscribers.add(a, all);
    EXPECT_THROW(
        subscribers.forEach(&EventKinds::app, [](Subscriber const&) { throw std::bad_alloc(); }),
        std::bad_alloc);
    subscribers.remove(a, all, 10s);
    EXPECT_EQ(a.use_count(), 1u) << "the call that threw is over";
}

TEST_F(SubscribersTest, AreNobodyWhenThePointerIsEmpty) {
    subscribers.add(counted_ptr<IZANEventListener>(), all);
    EXPECT_EQ(called(&EventKinds::app), "");
}

} // namespace
