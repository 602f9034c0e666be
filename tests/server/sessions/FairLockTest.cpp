#include "server/sessions/FairLock.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

namespace {

using namespace zan::server;
using namespace std::chrono_literals;
using Clock = FairLock::Clock;

TEST(FairLock, IsHeldByOneThreadAtATime) {
    FairLock lock;
    int count = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([&] {
            for (int j = 0; j < 20000; ++j) {
                std::lock_guard<FairLock> const held(lock);
                ++count;
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(count, 80000);
}

TEST(FairLock, IsGivenUpAtTheDeadline) {
    FairLock lock;
    lock.lock();
    std::thread([&] { EXPECT_FALSE(lock.lockUntil(Clock::now() + 20ms)); }).join();
    lock.unlock();
    EXPECT_TRUE(lock.lockUntil(Clock::now()));
    lock.unlock();
}

// The thread that has the lock wants it again at once, each time.
TEST(FairLock, LetsAThreadInThatHasWaited) {
    FairLock lock;
    std::atomic<bool> isOver{false};
    std::thread greedy([&] {
        while (!isOver) {
            std::lock_guard<FairLock> const held(lock);
            std::this_thread::sleep_for(5ms);
        }
    });
    std::this_thread::sleep_for(20ms);
    for (int i = 0; i < 20; ++i) {
        ASSERT_TRUE(lock.lockUntil(Clock::now() + 5s));
        lock.unlock();
    }
    isOver = true;
    greedy.join();
}

} // namespace
