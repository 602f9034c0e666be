// A log that could not store something notices by itself that it can again.
#include "server/log/LogFixture.h"

#include "server/log/Sqlite.h"

#include <chrono>
#include <stop_token>
#include <thread>

namespace {

using namespace logtest;
using namespace std::chrono_literals;

class LogRecovery : public LogTest {
protected:
    void moveAway() { std::filesystem::rename(folder_.file(), folder_.file("away")); }
    void moveBack() { std::filesystem::rename(folder_.file("away"), folder_.file()); }

    /// Sends until the log notices that its file is gone.
    void sendUntilRefused() {
        try {
            for (;;) {
                send("11=A|");
            }
        } catch (LogFailure const&) {
            return;
        }
    }

    bool recoversWithin(std::chrono::milliseconds patience) {
        auto const deadline = std::chrono::steady_clock::now() + patience;
        while (!log().worksAgain()) {
            if (std::chrono::steady_clock::now() > deadline) {
                return false;
            }
            std::this_thread::sleep_for(10ms);
        }
        return true;
    }
};

TEST_F(LogRecovery, IsNothingToTellOfALogThatNeverFailed) {
    send("11=A|");
    EXPECT_FALSE(log().worksAgain());
}

TEST_F(LogRecovery, IsNoticedWithoutAMessageAndToldOnce) {
    moveAway();
    sendUntilRefused();
    EXPECT_FALSE(recoversWithin(1200ms));
    moveBack();
    EXPECT_TRUE(recoversWithin(10s));
    EXPECT_FALSE(recoversWithin(1200ms));
}

TEST_F(LogRecovery, IsNoticedAgainAfterTheNextFailure) {
    for (int i = 0; i < 2; ++i) {
        moveAway();
        sendUntilRefused();
        moveBack();
        EXPECT_TRUE(recoversWithin(10s)) << i;
    }
}

// The session has to tell of the failure before.
TEST_F(LogRecovery, IsNotNoticedAtOnce) {
    moveAway();
    sendUntilRefused();
    moveBack();
    auto const before = std::chrono::steady_clock::now();
    EXPECT_TRUE(recoversWithin(10s));
    EXPECT_GE(std::chrono::steady_clock::now() - before, 1s);
}

TEST_F(LogRecovery, LeavesNothingBehind) {
    moveAway();
    sendUntilRefused();
    moveBack();
    auto const before = table("audit", "", "id");
    auto const ids = log().ids(-1, false);
    FixNumbers const numbers = log().numbers();
    ASSERT_TRUE(recoversWithin(10s));
    EXPECT_EQ(log().ids(-1, false), ids);
    EXPECT_EQ(table("audit", "", "id"), before);
    EXPECT_EQ(log().numbers(), numbers);
    EXPECT_EQ(send("11=B|"), static_cast<long>(ids.size()) + 1);
    open();
    EXPECT_EQ(log().lastId(), static_cast<long>(ids.size()) + 1);
}

TEST_F(LogRecovery, GoesOnBesideMessagesThatAreStored) {
    moveAway();
    sendUntilRefused();
    moveBack();
    std::jthread const sending([this](std::stop_token const& isEnough) {
        while (!isEnough.stop_requested()) {
            send("11=B|");
        }
    });
    EXPECT_TRUE(recoversWithin(10s));
}

TEST_F(LogRecovery, DoesNotFollowARowThatCannotBeRead) {
    send("11=A|");
    send("11=B|");
    log_.reset();
    Database(folder_.file(), Database::Access::Write)
        .execute("UPDATE messages SET text = x'00' WHERE id = 1");
    open();
    EXPECT_THROW(read(), LogFailure);
    EXPECT_FALSE(log().worksAgain());
}

} // namespace
