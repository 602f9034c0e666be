#include "server/engine/DeliveryQueue.h"

#include <gtest/gtest.h>

#include <atomic>
#include <ctime>
#include <future>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace zan::server;
using namespace std::chrono_literals;

std::vector<FixEntry> entries(std::vector<std::pair<long, std::string>> const& named) {
    std::vector<FixEntry> all;
    for (auto const& [id, text] : named) {
        FixEntry entry;
        entry.id = id;
        entry.text = text;
        all.push_back(entry);
    }
    return all;
}

class DeliveryQueueTest : public testing::Test {
protected:
    void push(long id, std::string const& text) {
        std::vector<FixEntry> one = entries({{id, text}});
        queue->push(one);
    }

    void make(
        std::function<void(Delivery const&)> deliver, std::function<void()> roomAgain = [] {}) {
        queue = std::make_shared<DeliveryQueue>(std::move(deliver), std::move(roomAgain), 0);
    }

    void start() {
        queue->start(queue, [] { return nullptr; });
    }

    std::shared_ptr<DeliveryQueue> queue;
};

TEST_F(DeliveryQueueTest, DeliversMessagesStatesAndTasksInTheirOrder) {
    std::string order;
    make([&](Delivery const& delivery) {
        if (auto const* entry = std::get_if<FixEntry>(&delivery)) {
            order += entry->text;
        } else if (auto const* task = std::get_if<Task>(&delivery)) {
            task->run(task->lastId);
        } else {
            order += "state ";
        }
    });
    push(1, "one ");
    queue->push(LinkState{});
    queue->push([&](long lastId) { order += "task after " + std::to_string(lastId) + " "; });
    push(2, "two ");
    start();
    EXPECT_TRUE(queue->stop(10s));
    EXPECT_EQ(order, "one state task after 1 two ");
}

TEST_F(DeliveryQueueTest, KnowsTheNewestMessageOfBefore) {
    long known = 0;
    queue = std::make_shared<DeliveryQueue>(
        [](Delivery const& delivery) {
            auto const& task = std::get<Task>(delivery);
            task.run(task.lastId);
        },
        [] {}, 41);
    queue->push([&](long lastId) { known = lastId; });
    start();
    EXPECT_TRUE(queue->stop(10s));
    EXPECT_EQ(known, 41);
}

TEST_F(DeliveryQueueTest, TellsWhenItIsFullAndWhenThereIsRoomAgain) {
    std::promise<void> release;
    auto const released = release.get_future().share();
    std::atomic<int> delivered{0};
    std::atomic<int> roomAgain{0};
    make(
        [&](Delivery const&) {
            released.wait();
            ++delivered;
        },
        [&] { ++roomAgain; });
    for (std::size_t i = 0; i < DeliveryQueue::capacity; ++i) {
        EXPECT_TRUE(queue->hasRoom());
        push(1, "x");
    }
    EXPECT_FALSE(queue->hasRoom());
    EXPECT_FALSE(queue->waitForRoom(10ms));
    start();
    EXPECT_TRUE(queue->waitForRoom(10s));
    release.set_value();
    EXPECT_TRUE(queue->stop(10s));
    EXPECT_EQ(delivered, static_cast<int>(DeliveryQueue::capacity));
    EXPECT_EQ(roomAgain, 1);
}

TEST_F(DeliveryQueueTest, IsFullWhenWhatWaitsIsLarge) {
    constexpr std::size_t eighth = DeliveryQueue::byteCapacity / 8;
    std::promise<void> release;
    auto const released = release.get_future().share();
    std::promise<void> entered;
    std::atomic<int> delivered{0};
    std::atomic<int> roomAgain{0};
    make(
        [&](Delivery const&) {
            if (delivered++ == 0) {
                entered.set_value();
                released.wait();
            }
        },
        [&] { ++roomAgain; });
    start();
    for (int i = 1; i <= 8; ++i) {
        EXPECT_TRUE(queue->hasRoom()) << i;
        push(i, std::string(eighth, 'x'));
        if (i == 1) {
            entered.get_future().wait();
        }
    }
    // The one that is being delivered is in memory as well.
    EXPECT_FALSE(queue->hasRoom());
    EXPECT_FALSE(queue->waitForRoom(10ms));
    release.set_value();
    EXPECT_TRUE(queue->waitForRoom(10s));
    EXPECT_TRUE(queue->stop(10s));
    EXPECT_EQ(delivered, 8);
    EXPECT_EQ(roomAgain, 1);
    EXPECT_TRUE(queue->hasRoom());
}

TEST_F(DeliveryQueueTest, TakesOneEntryHoweverLargeItIs) {
    std::atomic<int> roomAgain{0};
    make([](Delivery const&) {}, [&] { ++roomAgain; });
    push(1, std::string(2 * DeliveryQueue::byteCapacity, 'x'));
    EXPECT_FALSE(queue->hasRoom());
    start();
    EXPECT_TRUE(queue->waitForRoom(10s));
    EXPECT_TRUE(queue->stop(10s));
    EXPECT_EQ(roomAgain, 1);
}

// Who sees a listener of the engine end expects that the engine is gone.
TEST_F(DeliveryQueueTest, LetsGoOfItsListenersAfterItsOwnerWhenItWasLeftBehind) {
    std::promise<void> entered;
    std::promise<void> release;
    make([&, released = release.get_future().share()](Delivery const&) {
        entered.set_value();
        released.wait();
    });
    std::weak_ptr<DeliveryQueue> const owner = queue;
    std::promise<bool> endedAfterOwner;
    std::promise<bool> dropped;
    std::atomic<bool> isListenerGone{false};
    std::shared_ptr<void> listeners(nullptr, [&](std::nullptr_t) {
        isListenerGone = true;
        endedAfterOwner.set_value(owner.expired());
    });
    std::shared_ptr<void> token(nullptr,
                                [&](std::nullptr_t) { dropped.set_value(isListenerGone); });
    push(1, "held");
    queue->push([token = std::move(token)](long) { FAIL() << "the queue was stopped before"; });
    queue->start(queue,
                 [listeners = std::move(listeners)]() mutable { return std::move(listeners); });
    entered.get_future().wait();
    EXPECT_FALSE(queue->stop(0ms));
    queue.reset();
    release.set_value();
    EXPECT_TRUE(endedAfterOwner.get_future().get());
    EXPECT_TRUE(dropped.get_future().get()) << "after the listeners";
}

// Who waits for a task that was broken off finds the listeners gone.
TEST_F(DeliveryQueueTest, DropsTheTaskThatWasUnderWayAfterTheListeners) {
    std::promise<void> entered;
    std::promise<void> release;
    std::atomic<bool> isListenerGone{false};
    std::promise<bool> dropped;
    std::shared_ptr<void> token(nullptr,
                                [&](std::nullptr_t) { dropped.set_value(isListenerGone); });
    make([](Delivery const& delivery) { std::get<Task>(delivery).run(0); });
    queue->push([&, token = std::move(token)](long) {
        entered.set_value();
        release.get_future().wait();
    });
    queue->start(queue, [&] {
        return std::shared_ptr<void>(nullptr, [&](std::nullptr_t) { isListenerGone = true; });
    });
    entered.get_future().wait();
    EXPECT_FALSE(queue->stop(0ms));
    queue.reset();
    release.set_value();
    EXPECT_TRUE(dropped.get_future().get());
}

TEST_F(DeliveryQueueTest, TellsHowMuchIsNotDelivered) {
    std::vector<std::size_t> sizes;
    make([&](Delivery const&) { sizes.push_back(queue->size()); });
    EXPECT_EQ(queue->size(), 0u);
    push(1, "one");
    push(2, "two");
    queue->push(LinkState{});
    EXPECT_EQ(queue->size(), 3u);
    start();
    EXPECT_TRUE(queue->stop(10s));
    EXPECT_EQ(sizes, (std::vector<std::size_t>{3, 2, 1}));
    EXPECT_EQ(queue->size(), 0u);
}

TEST_F(DeliveryQueueTest, KnowsItsOwnThread) {
    std::atomic<bool> isInside{false};
    make([&](Delivery const&) { isInside = queue->isDelivering(); });
    EXPECT_FALSE(queue->isDelivering());
    start();
    push(1, "x");
    EXPECT_TRUE(queue->stop(10s));
    EXPECT_TRUE(isInside);
}

TEST_F(DeliveryQueueTest, MayBeStoppedTwiceAndWithoutAStart) {
    make([](Delivery const&) {});
    EXPECT_TRUE(queue->stop(1s));
    EXPECT_TRUE(queue->stop(1s));
    EXPECT_TRUE(queue->hasRoom());
}

TEST_F(DeliveryQueueTest, MeasuresTheDeliveryThatIsUnderWay) {
    std::promise<void> entered;
    std::promise<void> release;
    make([&](Delivery const&) {
        entered.set_value();
        release.get_future().wait();
    });
    EXPECT_EQ(queue->timeOfDelivery(), 0ms);
    start();
    push(1, "x");
    entered.get_future().wait();
    std::this_thread::sleep_for(20ms);
    EXPECT_GE(queue->timeOfDelivery(), 20ms);
    release.set_value();
    EXPECT_TRUE(queue->stop(10s));
    EXPECT_EQ(queue->timeOfDelivery(), 0ms);
}

TEST_F(DeliveryQueueTest, SleepsSoonAfterADelivery) {
    std::promise<void> delivered;
    make([&](Delivery const&) { delivered.set_value(); });
    start();
    push(1, "one");
    delivered.get_future().wait();
    std::this_thread::sleep_for(10ms);
    std::clock_t const before = std::clock();
    std::this_thread::sleep_for(300ms);
    double const millis = 1e3 * static_cast<double>(std::clock() - before) / CLOCKS_PER_SEC;
    EXPECT_LT(millis, 10) << "of processor time in 300 ms without anything to do";
    queue->stop(10s);
}

TEST_F(DeliveryQueueTest, DeliversWhetherItSleepsOrIsStillAwake) {
    std::atomic<int> count{0};
    make([&](Delivery const&) { ++count; });
    auto const other = std::make_shared<DeliveryQueue>([&](Delivery const&) { ++count; }, [] {}, 0);
    start();
    other->start(other, [] { return nullptr; });
    int pushed = 0;
    for (auto const pause : {0us, 50us, 150us, 250us, 1000us, 5000us}) {
        for (int i = 0; i < 20; ++i) {
            push(i + 1, "one");
            other->push(LinkState{});
            pushed += 2;
            std::this_thread::sleep_for(pause);
        }
    }
    queue->stop(10s);
    other->stop(10s);
    EXPECT_EQ(count, pushed);
}

TEST_F(DeliveryQueueTest, LeavesAListenerBehindThatDoesNotReturn) {
    std::promise<void> entered;
    std::promise<void> release;
    auto const delivered = std::make_shared<std::atomic<int>>(0);
    make([&entered, released = release.get_future().share(), delivered](Delivery const&) {
        entered.set_value();
        released.wait();
        ++*delivered;
    });
    start();
    push(1, "x");
    push(2, "never delivered");
    entered.get_future().wait();
    EXPECT_FALSE(queue->stop(10ms));
    std::weak_ptr<DeliveryQueue> const held = queue;
    queue.reset();
    EXPECT_FALSE(held.expired()) << "the listener still runs in it";
    release.set_value();
    while (!held.expired()) {
        std::this_thread::sleep_for(1ms);
    }
    EXPECT_EQ(*delivered, 1);
}

TEST_F(DeliveryQueueTest, TellsItsEndAfterTheLastDelivery) {
    std::string order;
    make([&](Delivery const& delivery) { order += std::get<FixEntry>(delivery).text; });
    push(1, "one ");
    push(2, "two ");
    queue->start(queue, [&] {
        order += queue->isDelivering() ? "end" : "end elsewhere";
        return nullptr;
    });
    EXPECT_TRUE(queue->stop(10s));
    EXPECT_EQ(order, "one two end");
}

TEST_F(DeliveryQueueTest, DropsWhatWasNotDoneAfterItsEnd) {
    std::atomic<bool> isEnded{false};
    std::promise<bool> droppedAfterEnd;
    std::promise<void> entered;
    std::promise<void> release;
    std::shared_ptr<void> token(nullptr,
                                [&](std::nullptr_t) { droppedAfterEnd.set_value(isEnded); });
    make([&, released = release.get_future().share()](Delivery const&) {
        entered.set_value();
        released.wait();
    });
    push(1, "held");
    queue->push([token = std::move(token)](long) { FAIL() << "the queue was stopped before"; });
    queue->start(queue, [&] {
        isEnded = true;
        return nullptr;
    });
    entered.get_future().wait();
    EXPECT_FALSE(queue->stop(0ms));
    release.set_value();
    EXPECT_TRUE(droppedAfterEnd.get_future().get());
    std::weak_ptr<DeliveryQueue> const held = queue;
    queue.reset();
    while (!held.expired()) {
        std::this_thread::sleep_for(1ms); // the thread still uses what is here
    }
}

TEST_F(DeliveryQueueTest, DropsTasksThatCameTooLate) {
    auto const token = std::make_shared<int>(0);
    make([](Delivery const&) {});
    start();
    EXPECT_TRUE(queue->stop(10s));
    queue->push([token](long) {});
    EXPECT_EQ(token.use_count(), 1);
}

} // namespace
