#include "infra/SimpleMutex.h"
#include "support/Slots.h"

#include <chrono>
#include <future>
#include <gtest/gtest.h>
#include <thread>
#include <type_traits>

namespace {

// Locks and unlocks on a thread of its own; the result is true when both worked.
std::future<bool> lockElsewhere(SimpleMutex& mutex) {
    return std::async(std::launch::async, [&mutex] {
        bool const locked = mutex.lock();
        bool const unlocked = mutex.unlock();
        return locked && unlocked;
    });
}

bool isWaiting(std::future<bool> const& result) {
    return result.wait_for(std::chrono::milliseconds(30)) == std::future_status::timeout;
}

TEST(SimpleMutex, RefusesBeforeItIsInitialised) {
    SimpleMutex mutex;
    EXPECT_FALSE(mutex.isInitialised());
    EXPECT_FALSE(mutex.lock());
    EXPECT_FALSE(mutex.unlock());
}

TEST(SimpleMutex, LocksAndUnlocksOnceInitialised) {
    SimpleMutex mutex;
    EXPECT_TRUE(mutex.initialize());
    EXPECT_TRUE(mutex.isInitialised());
    EXPECT_TRUE(mutex.lock());
    EXPECT_TRUE(mutex.unlock());
}

TEST(SimpleMutex, RefusesAfterItIsUninitialised) {
    SimpleMutex mutex;
    mutex.initialize();
    EXPECT_TRUE(mutex.uninitialize());
    EXPECT_FALSE(mutex.isInitialised());
    EXPECT_FALSE(mutex.lock());
    EXPECT_FALSE(mutex.unlock());
}

TEST(SimpleMutex, MayBeInitialisedAgain) {
    SimpleMutex mutex;
    mutex.initialize();
    EXPECT_TRUE(mutex.initialize());
    mutex.uninitialize();
    EXPECT_TRUE(mutex.uninitialize());
    EXPECT_TRUE(mutex.initialize());
    EXPECT_TRUE(lockElsewhere(mutex).get());
}

TEST(SimpleMutex, KeepsOtherThreadsOut) {
    SimpleMutex mutex;
    mutex.initialize();
    mutex.lock();
    std::future<bool> other = lockElsewhere(mutex);
    EXPECT_TRUE(isWaiting(other));
    mutex.unlock();
    EXPECT_TRUE(other.get());
}

// A function that expects the mutex to be free for its thread, as a listener that calls back does.
bool lockInside(IMutex& mutex) {
    bool const locked = mutex.lock();
    mutex.unlock();
    return locked;
}

TEST(SimpleMutex, LetsItsHolderInAgain) {
    SimpleMutex mutex;
    mutex.initialize();
    mutex.lock();
    EXPECT_TRUE(lockInside(mutex));
    std::future<bool> other = lockElsewhere(mutex);
    EXPECT_TRUE(isWaiting(other)) << "the outer lock is still held";
    mutex.unlock();
    EXPECT_TRUE(other.get());
}

TEST(SimpleMutex, IsNeverCopied) {
    EXPECT_FALSE(std::is_copy_constructible_v<SimpleMutex>);
    EXPECT_FALSE(std::is_copy_assignable_v<SimpleMutex>);
}

TEST(IMutex, KeepsItsVirtualFunctionsInOrder) {
    EXPECT_TRUE(std::has_virtual_destructor_v<IMutex>);
    EXPECT_EQ(2u, slotOf(&IMutex::initialize));
    EXPECT_EQ(3u, slotOf(&IMutex::uninitialize));
    EXPECT_EQ(4u, slotOf(&IMutex::lock));
    EXPECT_EQ(5u, slotOf(&IMutex::unlock));
    EXPECT_EQ(6u, slotOf(&IMutex::isInitialised));
}

} // namespace
