// When the numbers of a session begin with 1 again, by a clock of the test's own.
#include "server/sessions/RawPair.h"
#include "server/sessions/WatchedStore.h"

#include <gtest/gtest.h>

#include <atomic>
#include <ctime>
#include <thread>

namespace {

using namespace zan::server;
using namespace std::chrono_literals;

long long const second = 1000;
long long const hour = 3600 * second;
long long const day = 24 * hour;

// A Monday, 12:00 UTC.
long long const monday = 1795435200000;

Keys const goesOn = {{"StartTime", "00:00:00"}, {"EndTime", "00:00:00"}};
Keys const goesOnFromNoon = {{"StartTime", "12:00:00"}, {"EndTime", "12:00:00"}};
Keys const office = {{"StartTime", "08:00:00"}, {"EndTime", "17:00:00"}};
Keys const week = {{"StartTime", "08:00:00"},
                   {"EndTime", "17:00:00"},
                   {"StartDay", "Monday"},
                   {"EndDay", "Friday"}};

// A session with its store, which outlives the sessions of a test, at a time of day.
class HoursTest : public testing::Test {
protected:
    void SetUp() override { keepNumbering({monday, false}); }
    void TearDown() override { us_.reset(); }

    void keepNumbering(FixNumbering numbering) {
        store_.lock();
        store_.setNumbers({7, 9});
        store_.setNumbering(numbering);
        store_.commit();
        store_.unlock();
    }

    FixNumbering numbering() {
        store_.lock();
        FixNumbering const numbering = store_.numbering();
        store_.unlock();
        return numbering;
    }

    // As a process does that begins at this time.
    void begin(Keys const& keys, long long time) {
        us_.reset();
        ours_.reset(new SessionRecorder);
        now_ = time;
        FixSessionSettings settings = settingsFor("US", "THEM", peer_.port(), keys);
        settings.store = &store_;
        settings.clock = [this] { return now_.load(); };
        us_ = FixSession::initiator(settings, *ours_);
    }

    // The Logon that it sends, whichever link it takes for that.
    std::string logon() { return peer_.accept() ? peer_.waitFor("A") : "no link"; }

    bool answer(int number, std::string const& more = {}) {
        std::size_t const before = ours_->linesWith("on").size();
        peer_.number = number;
        peer_.send("A", "98=0|108=5|" + more);
        return ours_->waitFor("on", before + 1);
    }

    // With the next numbers 7 out and 9 in, if they go on.
    std::string logonAt(Keys const& keys, long long time) {
        begin(keys, time);
        us_->start({});
        return logon();
    }

    // Waits for the first one; where there is to be none `resets` is asked after what follows it.
    bool isReset() const { return ours_->waitFor("# sequence numbers reset"); }
    std::vector<std::string> resets() const { return ours_->linesWith("# sequence numbers reset"); }

    WatchedStore store_;
    RawPeer peer_;
    std::atomic<long long> now_{monday};
    std::unique_ptr<SessionRecorder> ours_;
    std::unique_ptr<FixSession> us_;
};

bool hasNumber(std::string const& message, int number) {
    return message.find("|34=" + std::to_string(number) + "|") != std::string::npos;
}

TEST_F(HoursTest, NumbersGoOnFromDayToDayWithEqualTimes) {
    for (Keys const& keys : {goesOn, goesOnFromNoon}) {
        int number = 7;
        for (long long const later : {12 * hour - 1, 12 * hour, day, 6 * day, 40 * day}) {
            std::string const message = logonAt(keys, monday + later);
            EXPECT_TRUE(hasNumber(message, number)) << later / hour << " hours later " << message;
            EXPECT_EQ(message.find("|141="), std::string::npos) << message;
            ++number;
        }
        keepNumbering({monday, false});
    }
}

TEST_F(HoursTest, ALogonStandsOverMidnightWithEqualTimes) {
    EXPECT_TRUE(hasNumber(logonAt(goesOn, monday + 12 * hour - second), 7));
    ASSERT_TRUE(answer(9));
    now_ = monday + 12 * hour + second;
    std::this_thread::sleep_for(600ms); // some ticks
    EXPECT_TRUE(us_->isLoggedOn());
    EXPECT_EQ(us_->nextSenderNumber(), 8);
    EXPECT_TRUE(resets().empty()) << ours_->all();
}

TEST_F(HoursTest, NumbersGoOnAfterARestartWithinTheHours) {
    EXPECT_TRUE(hasNumber(logonAt(office, monday + 5 * hour - second), 7));
    EXPECT_TRUE(hasNumber(logonAt(week, monday + 4 * day), 8));
}

TEST_F(HoursTest, NumbersBeginAgainOnceAfterTheBorderOfADay) {
    EXPECT_TRUE(hasNumber(logonAt(office, monday + 20 * hour), 1)) << ours_->all();
    ASSERT_TRUE(isReset());
    EXPECT_EQ(resets(),
              std::vector<std::string>{"# sequence numbers reset to 1: the session ended at "
                                       "20261123-17:00:00 UTC: "});
    ASSERT_TRUE(answer(1));
    EXPECT_EQ(us_->nextTargetNumber(), 2);
    EXPECT_TRUE(hasNumber(logonAt(office, monday + 21 * hour), 2)) << ours_->all();
    EXPECT_TRUE(resets().empty());
}

TEST_F(HoursTest, NumbersBeginAgainOnceAfterTheBorderOfAWeek) {
    EXPECT_TRUE(hasNumber(logonAt(week, monday + 7 * day), 1)) << ours_->all();
    EXPECT_TRUE(hasNumber(logonAt(week, monday + 11 * day), 2)) << ours_->all();
    EXPECT_TRUE(hasNumber(logonAt(week, monday + 28 * day), 1)) << ours_->all();
}

TEST_F(HoursTest, NumbersThatBeganOutsideTheHoursAreThoseOfTheNextRun) {
    keepNumbering({monday + 8 * hour, false});
    EXPECT_TRUE(hasNumber(logonAt(office, monday + 20 * hour), 7)) << ours_->all();
}

TEST_F(HoursTest, NothingIsWrittenByAProcessThatDoesNotConnect) {
    int const before = store_.commits;
    begin(office, monday + 30 * hour);
    EXPECT_EQ(us_->nextSenderNumber(), 7);
    EXPECT_EQ(store_.commits, before);
}

TEST_F(HoursTest, AStartOutsideTheHoursTellsWhenTheyBeginAndWaitsForThem) {
    begin(office, monday + 6 * hour);
    us_->start({});
    ASSERT_TRUE(ours_->waitFor("! closed outside its hours (StartTime=08:00:00, "
                               "EndTime=17:00:00); it opens at 20261124-08:00:00 UTC"))
        << ours_->all();
    EXPECT_EQ(us_->nextSenderNumber(), 1);
    ASSERT_TRUE(isReset());
    EXPECT_EQ(resets().size(), 1u);
    std::this_thread::sleep_for(1500ms);
    EXPECT_TRUE(ours_->linesWith("up").empty());
    now_ = monday + 20 * hour;
    EXPECT_TRUE(hasNumber(logon(), 1)) << ours_->all();
    ASSERT_TRUE(isReset());
    EXPECT_EQ(resets().size(), 1u) << ours_->all();
    EXPECT_EQ(ours_->linesWith("! closed").size(), 1u);
}

TEST_F(HoursTest, ALogonAtTheEndIsLoggedOutInOrderAndTheNumbersBeginAgainOnce) {
    EXPECT_TRUE(hasNumber(logonAt(office, monday), 7));
    ASSERT_TRUE(answer(9));
    now_ = monday + 5 * hour;
    std::string const logout = peer_.waitFor("5");
    EXPECT_TRUE(hasNumber(logout, 8)) << logout;
    EXPECT_NE(logout.find("|58=the session's hours are over|"), std::string::npos) << logout;
    EXPECT_TRUE(resets().empty());
    peer_.send("5", "");
    ASSERT_TRUE(ours_->waitFor("down"));
    EXPECT_EQ(us_->nextSenderNumber(), 1);
    EXPECT_EQ(us_->nextTargetNumber(), 1);
    ASSERT_TRUE(ours_->waitFor("! closed outside its hours"));
    now_ = monday + 20 * hour;
    EXPECT_TRUE(hasNumber(logon(), 1)) << ours_->all();
    ASSERT_TRUE(isReset());
    EXPECT_EQ(resets().size(), 1u) << ours_->all();
}

TEST_F(HoursTest, AnEndWhoseLogoutIsNotAnsweredIsAnEndToo) {
    logonAt(office, monday);
    ASSERT_TRUE(answer(9));
    now_ = monday + 5 * hour;
    ASSERT_FALSE(peer_.waitFor("5").empty());
    ASSERT_TRUE(ours_->waitFor("down"));
    EXPECT_EQ(us_->nextSenderNumber(), 1);
    ASSERT_TRUE(isReset());
    EXPECT_EQ(resets().size(), 1u);
}

TEST_F(HoursTest, ABorderWithoutAGapBetweenTwoRunsIsKept) {
    Keys const allWeek = {{"StartTime", "17:00:00"},
                          {"EndTime", "17:00:00"},
                          {"StartDay", "Monday"},
                          {"EndDay", "Monday"}};
    logonAt(allWeek, monday);
    ASSERT_TRUE(answer(9));
    now_ = monday + 5 * hour;
    ASSERT_FALSE(peer_.waitFor("5").empty());
    peer_.send("5", "");
    EXPECT_TRUE(hasNumber(logon(), 1)) << ours_->all();
    ASSERT_TRUE(isReset());
    EXPECT_EQ(resets().size(), 1u) << ours_->all();
}

TEST_F(HoursTest, TheLogonOfANewRunAsksForAResetWhereTheKeySaysSo) {
    Keys keys = office;
    keys.push_back({"ResetOnLogon", "Y"});
    EXPECT_NE(logonAt(keys, monday + day).find("|141=Y|"), std::string::npos);
    keepNumbering({monday, false});
    EXPECT_EQ(logonAt(office, monday + day).find("|141="), std::string::npos);
}

TEST_F(HoursTest, ALogonThatIsUnderWayAtTheEndIsGivenUp) {
    logonAt(office, monday + 5 * hour - second);
    now_ = monday + 5 * hour;
    EXPECT_TRUE(ours_->waitFor("! closed the session's hours are over")) << ours_->all();
    EXPECT_TRUE(ours_->waitFor("down"));
    EXPECT_EQ(us_->nextSenderNumber(), 1);
}

TEST_F(HoursTest, LogoutTimeLogsOutAndKeepsTheNumbers) {
    Keys keys = office;
    keys.insert(keys.end(), {{"LogonTime", "09:00:00"}, {"LogoutTime", "16:00:00"}});
    logonAt(keys, monday);
    ASSERT_TRUE(answer(9));
    now_ = monday + 4 * hour;
    ASSERT_FALSE(peer_.waitFor("5").empty());
    peer_.send("5", "");
    ASSERT_TRUE(ours_->waitFor("down"));
    EXPECT_EQ(us_->nextSenderNumber(), 9);
    EXPECT_EQ(us_->nextTargetNumber(), 11);
}

TEST_F(HoursTest, AClockThatJumpsBackOverTheBorderDoesNotResetTwice) {
    keepNumbering({monday + 5 * hour + second, false});
    EXPECT_TRUE(hasNumber(logonAt(office, monday + 5 * hour - second), 7)) << ours_->all();
    EXPECT_TRUE(hasNumber(logonAt(office, monday + 20 * hour), 8)) << ours_->all();
}

TEST_F(HoursTest, NumbersOfAClockThatWasFarAheadBeginAgainAtTheNextBorder) {
    keepNumbering({monday + 3000 * day, false});
    EXPECT_TRUE(hasNumber(logonAt(office, monday), 7)) << ours_->all();
    EXPECT_EQ(numbering().began, monday);
    EXPECT_TRUE(hasNumber(logonAt(office, monday + day), 1)) << ours_->all();
}

TEST_F(HoursTest, AnAcceptingSessionKeepsItsHoursToo) {
    std::unique_ptr<FixAcceptor> const acceptor = FixAcceptor::listen("127.0.0.1", 0);
    SessionRecorder theirs;
    FixSessionSettings settings = settingsFor("THEM", "US", 0, office);
    settings.clock = [this] { return now_.load(); };
    now_ = monday + 6 * hour;
    acceptor->add(settings, theirs);
    acceptor->start();
    RawPeer client("US", "THEM");
    ASSERT_TRUE(client.connect(acceptor->port()));
    client.send("A", "98=0|108=5|");
    EXPECT_TRUE(client.waitForEnd());
    EXPECT_TRUE(theirs.waitFor("! closed the session's hours are over")) << theirs.all();
    acceptor->stop();
}

} // namespace
