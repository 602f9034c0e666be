#include "server/engine/SendQueue.h"

#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <map>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace zan::server;
using namespace std::chrono_literals;
using Clock = SendQueue::Clock;

Clock::time_point soon() {
    return Clock::now() + 10s;
}

std::vector<FixOutgoing> messages(std::vector<std::string> const& types) {
    std::vector<FixOutgoing> all;
    for (std::string const& type : types) {
        all.push_back({type, {}, false});
    }
    return all;
}

TEST(SendQueue, SendsAtOnceForOneThread) {
    std::vector<std::size_t> sizes;
    SendQueue queue(
        [&](std::vector<FixOutgoing> const& all, std::vector<long>& ids, Clock::time_point) {
            sizes.push_back(all.size());
            ids = {7, 8};
            return FixSendResult::sent;
        });
    std::vector<long> ids;
    EXPECT_EQ(queue.send(messages({"D", "F"}), ids, soon()), FixSendResult::sent);
    EXPECT_EQ(ids, (std::vector<long>{7, 8}));
    EXPECT_EQ(sizes, (std::vector<std::size_t>{2}));
}

TEST(SendQueue, GivesEverybodyTheSameRefusal) {
    SendQueue queue([](std::vector<FixOutgoing> const&, std::vector<long>&, Clock::time_point) {
        return FixSendResult::peerTooSlow;
    });
    std::vector<long> ids;
    EXPECT_EQ(queue.send(messages({"D"}), ids, soon()), FixSendResult::peerTooSlow);
    EXPECT_TRUE(ids.empty());
}

TEST(SendQueue, HasNobodyWaitingWhoIsAlone) {
    std::size_t waiting = 1;
    SendQueue* asked = nullptr;
    SendQueue queue([&](std::vector<FixOutgoing> const&, std::vector<long>&, Clock::time_point) {
        waiting = asked->waiting();
        return FixSendResult::sent;
    });
    asked = &queue;
    std::vector<long> ids;
    queue.send(messages({"D"}), ids, soon());
    EXPECT_EQ(waiting, 0u);
}

// The first send is held until the others wait behind it, so that they go together.
class SendQueueTogether : public testing::Test {
protected:
    void run(std::function<FixSendResult(std::size_t size)> answer) {
        std::promise<void> entered;
        std::promise<void> release;
        std::atomic<bool> isFirst{true};
        long next = 0;
        SendQueue queue(
            [&](std::vector<FixOutgoing> const& all, std::vector<long>& ids, Clock::time_point) {
                if (isFirst.exchange(false)) {
                    entered.set_value();
                    release.get_future().wait();
                }
                sizes.push_back(all.size());
                FixSendResult const result = answer(all.size());
                if (result == FixSendResult::sent) {
                    for (FixOutgoing const& message : all) {
                        idOf[message.msgType] = ++next;
                        ids.push_back(next);
                    }
                }
                return result;
            });
        auto const sendAs = [&](std::string const& name) {
            std::vector<long> ids;
            FixSendResult const result =
                queue.send(messages({name + "1", name + "2"}), ids, soon());
            std::lock_guard const lock(mutex);
            results[name] = result;
            given[name] = ids;
        };
        std::thread first(sendAs, "a");
        entered.get_future().wait();
        std::thread second(sendAs, "b");
        std::thread third(sendAs, "c");
        while (queue.waiting() < 2) {
            std::this_thread::yield();
        }
        release.set_value();
        first.join();
        second.join();
        third.join();
    }

    std::mutex mutex;
    std::vector<std::size_t> sizes;
    std::map<std::string, long> idOf;
    std::map<std::string, FixSendResult> results;
    std::map<std::string, std::vector<long>> given;
};

TEST_F(SendQueueTogether, SendsForAllWhoWait) {
    run([](std::size_t) { return FixSendResult::sent; });
    EXPECT_EQ(sizes, (std::vector<std::size_t>{2, 4}));
    for (std::string const name : {"a", "b", "c"}) {
        EXPECT_EQ(given[name], (std::vector<long>{idOf[name + "1"], idOf[name + "2"]}));
        EXPECT_EQ(given[name][1], given[name][0] + 1) << "others came between";
    }
}

TEST_F(SendQueueTogether, TriesEachAloneWhenAllTogetherAreTooMuch) {
    run([](std::size_t size) { return size > 2 ? FixSendResult::refused : FixSendResult::sent; });
    EXPECT_EQ(sizes, (std::vector<std::size_t>{2, 4, 2, 2}));
    EXPECT_EQ(results["b"], FixSendResult::sent);
    EXPECT_EQ(results["c"], FixSendResult::sent);
}

TEST(SendQueue, WaitsForOthersNoLongerThanItsDeadline) {
    std::promise<void> entered;
    std::promise<void> release;
    SendQueue queue(
        [&](std::vector<FixOutgoing> const&, std::vector<long>& ids, Clock::time_point) {
            entered.set_value();
            release.get_future().wait();
            ids = {1};
            return FixSendResult::sent;
        });
    std::thread first([&] {
        std::vector<long> ids;
        EXPECT_EQ(queue.send(messages({"D"}), ids, soon()), FixSendResult::sent);
    });
    entered.get_future().wait();
    std::vector<long> ids;
    EXPECT_EQ(queue.send(messages({"D"}), ids, Clock::now() + 50ms), FixSendResult::busy);
    EXPECT_EQ(queue.waiting(), 0u);
    release.set_value();
    first.join();
}

TEST(SendQueue, TriesAgainForThoseWhoHaveTime) {
    std::promise<void> entered;
    std::promise<void> release;
    int calls = 0;
    SendQueue queue([&](std::vector<FixOutgoing> const& all, std::vector<long>& ids,
                        Clock::time_point deadline) {
        if (++calls == 1) {
            entered.set_value();
            release.get_future().wait();
        } else if (all.size() > 1) {
            std::this_thread::sleep_until(deadline);
            return FixSendResult::busy;
        }
        ids.assign(all.size(), calls);
        return FixSendResult::sent;
    });
    auto const sendUntil = [&](Clock::time_point deadline, FixSendResult expected) {
        std::vector<long> ids;
        EXPECT_EQ(queue.send(messages({"D"}), ids, deadline), expected);
    };
    std::thread first(sendUntil, soon(), FixSendResult::sent);
    entered.get_future().wait();
    std::thread hasty(sendUntil, Clock::now() + 300ms, FixSendResult::busy);
    std::thread patient(sendUntil, soon(), FixSendResult::sent);
    while (queue.waiting() < 2) {
        std::this_thread::yield();
    }
    release.set_value();
    first.join();
    hasty.join();
    patient.join();
}

} // namespace
