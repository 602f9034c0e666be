#include "events/ZANConnectionState.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <ctime>
#include <iomanip>
#include <limits>
#include <sstream>
#include <string>

namespace {

using State = ZANConnectionState;

std::string textOf(State const& record) {
    std::ostringstream os;
    os << record;
    return os.str();
}

std::string localText(std::time_t seconds) {
    std::array<char, 200> text{};
    std::tm local{};
    localtime_r(&seconds, &local);
    std::strftime(text.data(), text.size(), "%c", &local);
    return text.data();
}

/// The text that stands before the time, without the addresses.
std::string wordsOf(long state) {
    std::string const text = textOf(State(state));
    return text.substr(0, text.find(" [Remote address"));
}

long const bit31 = std::numeric_limits<std::int32_t>::min();

TEST(ConnectionState, DefaultRecordIsEmptyWithHeartbeatsNotSet) {
    State const record;
    EXPECT_EQ(record.getHeartbeats(), -1);
    EXPECT_EQ(record.getState(), 0);
    EXPECT_EQ(record.getTimeLastStateChange(), 0.0);
    EXPECT_EQ(record.getLastError(), "");
    EXPECT_EQ(record.getLocalAddress(), "");
    EXPECT_EQ(record.getRemoteAddress(), "");
}

TEST(ConnectionState, OtherConstructorsTakeWhatTheyAreGivenAndLeaveHeartbeatsZero) {
    State const word(0x60);
    State const wordAndTime(0x20, 5000.0);
    State const all(0x10, 7000.0, "refused");
    EXPECT_EQ(word.getState(), 0x60);
    EXPECT_EQ(word.getTimeLastStateChange(), 0.0);
    EXPECT_EQ(wordAndTime.getState(), 0x20);
    EXPECT_EQ(wordAndTime.getTimeLastStateChange(), 5000.0);
    EXPECT_EQ(all.getState(), 0x10);
    EXPECT_EQ(all.getTimeLastStateChange(), 7000.0);
    EXPECT_EQ(all.getLastError(), "refused");
    for (State const* record : {&word, &wordAndTime, &all}) {
        EXPECT_EQ(record->getHeartbeats(), 0);
        EXPECT_EQ(record->getLocalAddress() + record->getRemoteAddress(), "");
    }
}

State fullRecord() {
    State record(0x60, 1234000.0, "none");
    record.setHeartbeats(30);
    record.setLocalAddress("127.0.0.1:4000");
    record.setRemoteAddress("10.0.0.1:5000");
    return record;
}

void expectFull(State const& record) {
    EXPECT_EQ(record.getState(), 0x60);
    EXPECT_EQ(record.getTimeLastStateChange(), 1234000.0);
    EXPECT_EQ(record.getLastError(), "none");
    EXPECT_EQ(record.getHeartbeats(), 30);
    EXPECT_EQ(record.getLocalAddress(), "127.0.0.1:4000");
    EXPECT_EQ(record.getRemoteAddress(), "10.0.0.1:5000");
}

TEST(ConnectionState, CopiesAllFields) {
    State const record = fullRecord();
    State const copy(record);
    State assigned;
    assigned = record;
    expectFull(copy);
    expectFull(assigned);
}

TEST(ConnectionState, SettersReplaceAndLeaveTheTimeAlone) {
    State record(0x60, 1000.0);
    record.setState(0x10);
    record.setLastError("lost");
    EXPECT_EQ(record.getState(), 0x10);
    EXPECT_EQ(record.getLastError(), "lost");
    EXPECT_EQ(record.getTimeLastStateChange(), 1000.0);
    record.setTimeLastStateChange(2500.5);
    EXPECT_EQ(record.getTimeLastStateChange(), 2500.5);
}

TEST(ConnectionState, KeepsTheLowThirtyTwoBitsOfALong) {
    if (sizeof(long) == sizeof(std::int32_t)) {
        GTEST_SKIP() << "long has 32 bits";
    }
    State record(static_cast<long>(0x700000020LL));
    EXPECT_EQ(record.getState(), 0x20);
    record.setState(static_cast<long>(0x780000000LL));
    EXPECT_EQ(record.getState(), bit31);
    record.setHeartbeats(static_cast<long>(0x70000001eLL));
    EXPECT_EQ(record.getHeartbeats(), 30);
}

TEST(ConnectionState, KeepsBitsThatHaveNoMeaning) {
    State record(0x1 | 0x8000 | 0x40000);
    EXPECT_EQ(record.getState(), 0x48001);
    EXPECT_TRUE(record.isStateActive(0x40000));
    EXPECT_EQ(wordsOf(0x48001), wordsOf(0));
}

void expectStampedNow(State const& record, std::time_t before) {
    double const stamp = record.getTimeLastStateChange();
    EXPECT_GE(stamp, static_cast<double>(before) * 1000.0);
    EXPECT_LE(stamp, static_cast<double>(std::time(nullptr)) * 1000.0);
    EXPECT_EQ(static_cast<std::int64_t>(stamp) % 1000, 0);
}

TEST(ConnectionState, EnteringNothingStillStampsTheTime) {
    State record(0x60);
    auto const before = std::time(nullptr);
    record.enterState(0);
    EXPECT_EQ(record.getState(), 0x60);
    expectStampedNow(record, before);
}

TEST(ConnectionState, LeavingNothingStillStampsTheTime) {
    State record(0x60);
    auto const before = std::time(nullptr);
    record.leaveState(0x10);
    EXPECT_EQ(record.getState(), 0x60);
    expectStampedNow(record, before);
}

TEST(ConnectionState, ChangingOnAndOffRestoresTheWordAndStampsTheTime) {
    State record(0x20);
    auto const before = std::time(nullptr);
    record.changeState(FLAG_SESSION_ACTIVE, true);
    EXPECT_EQ(record.getState(), 0x60);
    expectStampedNow(record, before);
    record.setTimeLastStateChange(0);
    record.changeState(FLAG_SESSION_ACTIVE, false);
    EXPECT_EQ(record.getState(), 0x20);
    expectStampedNow(record, before);
}

TEST(ConnectionState, AnyCommonBitMakesAStateActive) {
    EXPECT_TRUE(State(0x30).isStateActive(0x60));
    EXPECT_FALSE(State(0x30).isStateActive(0x40));
    EXPECT_FALSE(State(0x30).isStateActive(0));
}

TEST(ConnectionState, IsNeverActiveForBitThirtyOne) {
    State const record(bit31 | 0x10);
    EXPECT_FALSE(record.isStateActive(bit31));
    EXPECT_FALSE(record.isStateActive(bit31 | 0x10));
    EXPECT_TRUE(record.isStateActive(0x10));
}

struct FlagCase {
    long flag;
    long value;
    bool (State::*predicate)() const;
};

TEST(ConnectionState, EachPredicateTestsItsFlag) {
    FlagCase const cases[] = {
        {FLAG_LOGGED_OUT, 0x10, &State::isLoggedOut},
        {FLAG_LINK_ACTIVE, 0x20, &State::isLinkActive},
        {FLAG_SESSION_ACTIVE, 0x40, &State::isSessionActive},
        {FLAG_MESSAGING_IDLE, 0x80, &State::isMessagingIdle},
        {FLAG_DISCONNECTED, 0x100, &State::hasDisconnected},
        {FLAG_UNAVAILABLE, 0x4000, &State::isUnavailable},
        {FLAG_ON_HOLD, 0x20000, &State::isOnHold},
    };
    for (auto const& test : cases) {
        EXPECT_EQ(test.flag, test.value);
        EXPECT_TRUE((State(test.flag).*test.predicate)()) << test.value;
        EXPECT_FALSE((State(~test.flag).*test.predicate)()) << test.value;
    }
}

TEST(ConnectionState, FlagsWithoutAPredicateHaveTheirBits) {
    EXPECT_EQ(FLAG_TIMED_OUT, 0x200);
    EXPECT_EQ(FLAG_BROKEN, 0x400);
    EXPECT_EQ(FLAG_DB_ERROR, 0x800);
    EXPECT_EQ(FLAG_CRYPT_ERROR, 0x1000);
    EXPECT_EQ(FLAG_UNREACHABLE, 0x2000);
}

TEST(ConnectionState, DisplayNamesAreTheKnownWords) {
    EXPECT_EQ(State::STATE_CONNECTED, "connected");
    EXPECT_EQ(State::STATE_NOT_CONNECTED, "disconnected");
    EXPECT_EQ(State::STATE_AUTHORIZING, "authorizing");
    EXPECT_EQ(State::STATE_UNAVAILABLE, "unavailable");
    EXPECT_EQ(State::STATE_AVAILABLE, "available");
    EXPECT_EQ(State::STATE_CONNECTING, "connecting");
    EXPECT_EQ(State::STATE_DISCONNECTING, "disconnecting");
    EXPECT_EQ(State::STATE_ON_HOLD, "on hold");
    EXPECT_EQ(State::MSGING_STATE_ACTIVE, "active");
    EXPECT_EQ(State::MSGING_STATE_IDLE, "idle");
    EXPECT_EQ(State::MSGING_STATE_TIMED_OUT, "timed out");
    EXPECT_EQ(State::MSGING_STATE_BROKEN, "broken");
    EXPECT_EQ(State::MSGING_STATE_LOGGED_OUT, "logged out");
    EXPECT_EQ(State::MSGING_STATE_UNREACHABLE, "unreachable");
    EXPECT_EQ(State::MSGING_STATE_REJECTED, "rejected");
    EXPECT_EQ(State::MSGING_STATE_DB_ERROR, "db error");
    EXPECT_EQ(State::MSGING_STATE_CRYPT_ERROR, "crypt error");
}

TEST(ConnectionStateText, ShowsLinkSessionAndMessaging) {
    struct {
        long state;
        char const* text;
    } const cases[] = {
        {0, " [disconnected. ] [Messaging: ]"},
        {FLAG_LINK_ACTIVE, " [connected. Not logged on] [Messaging: ]"},
        {FLAG_LINK_ACTIVE | FLAG_ON_HOLD, " [connected. Not logged on] [Messaging: ]"},
        {FLAG_ON_HOLD, " [on hold. ] [Messaging: ]"},
        {0x60, " [connected. Logged on] [Messaging: active]"},
        {0xe0, " [connected. Logged on] [Messaging: idle]"},
        {FLAG_SESSION_ACTIVE, " [disconnected. Logged on] [Messaging: active]"},
        {FLAG_SESSION_ACTIVE | 0x7e10, " [disconnected. Logged on] [Messaging: active]"},
        {FLAG_MESSAGING_IDLE, " [disconnected. ] [Messaging: ]"},
        {0x410, " [disconnected. ] [Messaging: logged out, broken]"},
        {FLAG_TIMED_OUT, " [disconnected. ] [Messaging: timed out]"},
        {0x7e10, " [disconnected. ] [Messaging: logged out, broken, timed out, db error, "
                 "crypt error, unreachable, unavailable]"},
    };
    for (auto const& test : cases) {
        EXPECT_EQ(wordsOf(test.state), test.text) << test.state;
    }
}

TEST(ConnectionStateText, IsOneLineOfAllPieces) {
    EXPECT_EQ(textOf(fullRecord()),
              " [connected. Logged on] [Messaging: active] [Remote address: 10.0.0.1:5000] "
              "[Local address: 127.0.0.1:4000] [Last state change: " +
                  localText(1234) + "] [Heartbeat: 30] [Last error: none]");
}

TEST(ConnectionStateText, ShowsAnEmptyErrorToo) {
    State const record;
    std::string const text = textOf(record);
    std::string const end = "[Heartbeat: -1] [Last error: ]";
    EXPECT_EQ(text.substr(text.size() - end.size()), end);
}

TEST(ConnectionStateText, ShowsOnlyTheLengthOfALongText) {
    State record;
    std::string const longest(2047, 'x');
    record.setRemoteAddress(longest);
    record.setLocalAddress(longest + "x");
    record.setLastError(std::string(70000, 'y'));
    std::string const text = textOf(record);
    EXPECT_NE(text.find(" [Remote address: " + longest + "]"), std::string::npos);
    EXPECT_NE(text.find(" [Local address:  length = 2048]"), std::string::npos);
    EXPECT_NE(text.find(" [Last error:  length = 70000]"), std::string::npos);
}

TEST(ConnectionStateText, RoundsTheTimeToTheNearestSecond) {
    EXPECT_NE(textOf(State(0, 86400499.0)).find(": " + localText(86400) + "]"), std::string::npos);
    EXPECT_NE(textOf(State(0, 86400500.0)).find(": " + localText(86401) + "]"), std::string::npos);
}

TEST(ConnectionStateText, ShowsNothingForATimeWithoutADate) {
    double const none[] = {1e300, -1e300, std::numeric_limits<double>::infinity(),
                           std::numeric_limits<double>::quiet_NaN(), 9e21};
    for (double const time : none) {
        EXPECT_NE(textOf(State(0, time)).find("[Last state change: ] [Heartbeat: 0]"),
                  std::string::npos)
            << time;
    }
}

TEST(ConnectionStateText, IsDecimalWhateverTheStreamIsSetTo) {
    State record;
    record.setHeartbeats(30);
    record.setLastError(std::string(2048, 'x'));
    std::ostringstream os;
    os << std::hex << std::showbase << std::showpos << record;
    EXPECT_NE(os.str().find("[Heartbeat: 30]"), std::string::npos);
    EXPECT_NE(os.str().find("length = 2048]"), std::string::npos);
}

TEST(ConnectionStateText, ReturnsTheStream) {
    std::ostringstream os;
    EXPECT_EQ(&(os << State()), &os);
}

} // namespace
