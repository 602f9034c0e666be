#include "engine/AutoMutex.h"
#include "engine/NullMutex.h"
#include "engine/ScopedGuard.h"
#include "support/Slots.h"

#include <gtest/gtest.h>

#include <string>

namespace {

constexpr char const* guardText = "\n\n\n\n\n!!!!!! Guard: &mutex = NULL!!!\n\n\n\n\n";

TEST(NullMutex, AnswersTrueToEverything) {
    NullMutex mutex;
    EXPECT_TRUE(mutex.initialize());
    EXPECT_TRUE(mutex.lock());
    EXPECT_TRUE(mutex.unlock());
    EXPECT_TRUE(mutex.isInitialised());
    EXPECT_TRUE(mutex.uninitialize());
    EXPECT_TRUE(mutex.isInitialised());
}

TEST(AutoMutex, IsInitialisedFromTheStart) {
    AutoMutex mutex;
    EXPECT_TRUE(mutex.isInitialised());
    EXPECT_TRUE(mutex.lock());
    EXPECT_TRUE(mutex.unlock());
}

TEST(IMutex, KeepsItsSlots) {
    EXPECT_EQ(2u, slotOf(&IMutex::initialize));
    EXPECT_EQ(3u, slotOf(&IMutex::uninitialize));
    EXPECT_EQ(4u, slotOf(&IMutex::lock));
    EXPECT_EQ(5u, slotOf(&IMutex::unlock));
    EXPECT_EQ(6u, slotOf(&IMutex::isInitialised));
}

class CountingMutex : public NullMutex {
public:
    bool lock() override {
        ++locks;
        return true;
    }
    bool unlock() override {
        ++unlocks;
        return true;
    }
    int locks = 0;
    int unlocks = 0;
};

TEST(ScopedGuard, LocksOnEntryAndUnlocksOnLeaving) {
    CountingMutex mutex;
    {
        ScopedGuard const guard(&mutex);
        EXPECT_EQ(1, mutex.locks);
        EXPECT_EQ(0, mutex.unlocks);
    }
    EXPECT_EQ(1, mutex.unlocks);
}

TEST(ScopedGuard, UnlocksWhenAnExceptionPasses) {
    CountingMutex mutex;
    try {
        ScopedGuard const guard(&mutex);
        throw 1;
    } catch (int) {
    }
    EXPECT_EQ(1, mutex.unlocks);
}

TEST(ScopedGuard, SaysLoudlyThatItHasNoMutex) {
    testing::internal::CaptureStdout();
    {
        ScopedGuard const guard(nullptr);
        EXPECT_EQ(guardText, testing::internal::GetCapturedStdout());
        testing::internal::CaptureStdout();
    }
    EXPECT_EQ(guardText, testing::internal::GetCapturedStdout());
}

} // namespace
