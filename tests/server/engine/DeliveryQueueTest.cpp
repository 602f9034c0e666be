#include "server/engine/DeliveryQueue.h"

#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <string>
#include <vector>

namespace {

using namespace zan::server;
using namespace std::chrono_literals;

TEST(DeliveryQueue, DeliversMessagesAndStatesInTheirOrder) {
    std::string order;
    DeliveryQueue queue(
        [&](Delivery const& delivery) {
            auto const* message = std::get_if<WireMessage>(&delivery);
            order += message ? message->text : "state ";
        },
        [] {});
    queue.start();
    queue.push("one ", true);
    queue.push(LinkState{});
    queue.push("two ", false);
    queue.stop();
    EXPECT_EQ(order, "one state two ");
}

TEST(DeliveryQueue, NumbersMessagesFromOneOn) {
    std::vector<long> ids;
    DeliveryQueue queue(
        [&](Delivery const& delivery) { ids.push_back(std::get<WireMessage>(delivery).id); },
        [] {});
    EXPECT_EQ(queue.push("a", false), 1);
    EXPECT_EQ(queue.push("b", false), 2);
    queue.start();
    queue.stop();
    EXPECT_EQ(ids, (std::vector<long>{1, 2}));
}

TEST(DeliveryQueue, TellsWhenItIsFullAndWhenThereIsRoomAgain) {
    std::promise<void> release;
    auto const released = release.get_future().share();
    std::atomic<int> delivered{0};
    std::atomic<int> roomAgain{0};
    DeliveryQueue queue(
        [&](Delivery const&) {
            released.wait();
            ++delivered;
        },
        [&] { ++roomAgain; });
    for (std::size_t i = 0; i < DeliveryQueue::capacity; ++i) {
        EXPECT_TRUE(queue.hasRoom());
        queue.push("x", false);
    }
    EXPECT_FALSE(queue.hasRoom());
    EXPECT_FALSE(queue.waitForRoom(10ms));
    queue.start();
    EXPECT_TRUE(queue.waitForRoom(10s));
    release.set_value();
    queue.stop();
    EXPECT_EQ(delivered, static_cast<int>(DeliveryQueue::capacity));
    EXPECT_EQ(roomAgain, 1);
}

TEST(DeliveryQueue, KnowsItsOwnThread) {
    DeliveryQueue* self = nullptr;
    std::atomic<bool> isInside{false};
    DeliveryQueue queue([&](Delivery const&) { isInside = self->isDelivering(); }, [] {});
    self = &queue;
    EXPECT_FALSE(queue.isDelivering());
    queue.start();
    queue.push("x", false);
    queue.stop();
    EXPECT_TRUE(isInside);
}

TEST(DeliveryQueue, MayBeStoppedTwiceAndWithoutAStart) {
    DeliveryQueue queue([](Delivery const&) {}, [] {});
    queue.stop();
    queue.stop();
    EXPECT_TRUE(queue.hasRoom());
}

} // namespace
