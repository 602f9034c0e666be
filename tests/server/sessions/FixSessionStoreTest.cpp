// What a session does with its store: when it commits, what a failure leaves, what it sends again.
#include "server/sessions/StoredPair.h"

#include <gtest/gtest.h>

#include <thread>

namespace {

using namespace zan::server;
using namespace std::chrono_literals;

using Lines = std::vector<std::string>;

TEST(FixSessionStore, KeepsTheNumbersBeyondTheSession) {
    WatchedStore store;
    {
        RawPair pair({}, &store);
        ASSERT_TRUE(pair.logOn());
        ASSERT_EQ(sendOne(*pair.us, "B", {{148, "old"}}), FixSendResult::sent);
        pair.us->stop();
    }
    RawPair pair({}, &store);
    EXPECT_EQ(pair.us->nextSenderNumber(), 3);
    EXPECT_EQ(pair.us->nextTargetNumber(), 2);
    pair.peer.number = 2;
    ASSERT_TRUE(pair.logOn());
    pair.peer.send("2", "7=2|16=2|");
    EXPECT_NE(pair.peer.waitFor("B").find("|148=old|"), std::string::npos);
    EXPECT_TRUE(pair.ours.linesWith("! ").empty()) << pair.ours.all();
}

// The counterparty looks at the socket from inside the commit.
TEST(FixSessionStore, CommitsBeforeTheBytesLeave) {
    StoredPair tested;
    std::atomic<bool> isWatching{false};
    std::atomic<int> looks{0};
    std::atomic<int> tooEarly{0};
    tested.store.beforeCommit = [&] {
        if (!isWatching)
            return;
        ++looks;
        std::this_thread::sleep_for(10ms);
        tooEarly += tested.pair.peer.hasBytes() ? 1 : 0;
    };
    ASSERT_TRUE(tested.logOn());
    isWatching = true;
    ASSERT_EQ(tested.send("out"), FixSendResult::sent);
    isWatching = false;
    EXPECT_EQ(looks, 1);
    EXPECT_EQ(tooEarly, 0);
    EXPECT_FALSE(tested.pair.peer.waitFor("B").empty());
}

TEST(FixSessionStore, CommitsBeforeItAnswers) {
    StoredPair tested;
    std::atomic<bool> isWatching{false};
    std::atomic<int> tooEarly{0};
    tested.store.beforeCommit = [&] {
        if (isWatching)
            tooEarly += tested.pair.peer.hasBytes() ? 1 : 0;
    };
    ASSERT_TRUE(tested.logOn());
    isWatching = true;
    tested.pair.peer.send("1", "112=ping|");
    EXPECT_FALSE(tested.pair.peer.waitFor("0").empty());
    EXPECT_EQ(tooEarly, 0);
}

TEST(FixSessionStore, CommitsOnceForAPacketOfManyMessages) {
    StoredPair tested;
    ASSERT_TRUE(tested.logOn());
    std::string packet;
    for (int i = 0; i < 200; ++i)
        packet += tested.pair.peer.framed("B", "148=" + std::to_string(i) + "|");
    int const before = tested.store.commits;
    tested.pair.peer.sendBytes(packet);
    ASSERT_TRUE(tested.pair.ours.waitFor("|148=199|"));
    EXPECT_LE(tested.store.commits - before, 3);
    EXPECT_EQ(tested.pair.ours.linesWith("|35=B|").size(), 200u);
}

TEST(FixSessionStore, CommitsOnceForManyMessagesSentTogether) {
    StoredPair tested;
    ASSERT_TRUE(tested.logOn());
    std::vector<FixOutgoing> messages;
    for (int i = 0; i < 50; ++i)
        messages.push_back({"B", {{148, std::to_string(i)}}});
    int const before = tested.store.commits;
    std::vector<long> ids;
    ASSERT_EQ(tested.pair.us->send(messages, 1s, ids), FixSendResult::sent);
    EXPECT_EQ(tested.store.commits - before, 1);
    ASSERT_EQ(ids.size(), 50u);
    std::vector<FixEntry> const entries = tested.pair.ours.entries();
    for (std::size_t i = 0; i < ids.size(); ++i) {
        EXPECT_EQ(entries[i + 2].id, ids[i]);
        EXPECT_EQ(fixValue(entries[i + 2].text, 148), std::to_string(i));
    }
    for (int i = 0; i < 50; ++i)
        EXPECT_NE(tested.pair.peer.waitFor("B").find("|148=" + std::to_string(i) + "|"),
                  std::string::npos);
}

TEST(FixSessionStore, CommitsNothingWhenNothingHappens) {
    StoredPair tested;
    ASSERT_TRUE(tested.logOn());
    int const before = tested.store.commits;
    std::this_thread::sleep_for(600ms);
    EXPECT_EQ(tested.store.commits, before);
}

TEST(FixSessionStore, SendsTogetherMoreThanMayWaitOtherwise) {
    StoredPair tested;
    ASSERT_TRUE(tested.logOn());
    std::vector<FixOutgoing> const messages(100, {"B", {{58, std::string(120'000, 'x')}}});
    std::vector<long> ids;
    ASSERT_EQ(tested.pair.us->send(messages, 1s, ids), FixSendResult::sent);
    EXPECT_EQ(sendOne(*tested.pair.us, "B", {{148, "more"}}, 100ms), FixSendResult::peerTooSlow);
    for (int i = 0; i < 100; ++i)
        ASSERT_FALSE(tested.pair.peer.waitFor("B").empty());
    EXPECT_TRUE(tested.pair.us->isLoggedOn());
}

struct FailingSend {
    char const* name;
    std::atomic<int> WatchedStore::*failing;
    std::size_t messages;
};

class FailingSends : public testing::TestWithParam<FailingSend> {};

TEST_P(FailingSends, UseNoNumberAndLeaveTheSessionAsItWas) {
    StoredPair tested;
    ASSERT_TRUE(tested.logOn());
    std::vector<FixOutgoing> const messages(GetParam().messages, {"B", {{148, "lost"}}});
    std::vector<long> ids;
    tested.store.*GetParam().failing = 1;
    EXPECT_EQ(tested.pair.us->send(messages, 1s, ids), FixSendResult::refused);
    EXPECT_TRUE(ids.empty());
    EXPECT_EQ(tested.pair.ours.linesWith("! "), Lines{"! storage the disk is full"});
    EXPECT_EQ(tested.pair.us->nextSenderNumber(), 2);
    ASSERT_EQ(tested.send("next"), FixSendResult::sent);
    std::string const first = tested.pair.peer.waitFor("B");
    EXPECT_NE(first.find("|34=2|"), std::string::npos) << first;
    EXPECT_NE(first.find("|148=next|"), std::string::npos) << first;
    EXPECT_TRUE(tested.pair.ours.linesWith("|148=lost|").empty());
    EXPECT_EQ(tested.pair.ours.entries().back().id, 3);
    EXPECT_TRUE(tested.pair.us->isLoggedOn());
}

INSTANTIATE_TEST_SUITE_P(
    Store, FailingSends,
    testing::Values(FailingSend{"Commit", &WatchedStore::failingCommits, 1},
                    FailingSend{"CommitOfMany", &WatchedStore::failingCommits, 10},
                    FailingSend{"Append", &WatchedStore::failingAppends, 1},
                    FailingSend{"AppendOfMany", &WatchedStore::failingAppends, 10}),
    [](auto const& tested) { return tested.param.name; });

class FailingTakes : public testing::TestWithParam<std::atomic<int> WatchedStore::*> {};

TEST_P(FailingTakes, EndTheLinkAndTakeTheMessagesWhenTheyComeAgain) {
    StoredPair tested;
    ASSERT_TRUE(tested.logOn());
    tested.store.*GetParam() = 1;
    RawPeer& peer = tested.pair.peer;
    std::string const request = peer.framed("1", "112=unanswered|");
    peer.sendBytes(request + peer.framed("B", "148=first|"));
    ASSERT_TRUE(tested.pair.ours.waitFor("down"));
    EXPECT_EQ(tested.pair.ours.linesWith("! ").front(), "! storage the disk is full");
    EXPECT_TRUE(tested.pair.ours.linesWith("|148=first|").empty());
    EXPECT_TRUE(peer.waitFor("0").empty());
    EXPECT_EQ(tested.pair.us->nextTargetNumber(), 2);
    EXPECT_EQ(tested.pair.us->nextSenderNumber(), 2);
    ASSERT_TRUE(peer.logOn());
    EXPECT_NE(peer.waitFor("2").find("|7=2|"), std::string::npos);
    peer.number = 2;
    peer.send("4", "43=Y|122=20260101-00:00:00|123=Y|36=3|");
    peer.send("B", "43=Y|122=20260101-00:00:00|148=first|");
    EXPECT_TRUE(tested.pair.ours.waitFor("|148=first|"));
}

INSTANTIATE_TEST_SUITE_P(Store, FailingTakes,
                         testing::Values(&WatchedStore::failingCommits,
                                         &WatchedStore::failingAppends));

TEST(FixSessionStore, EndsTheLinkWhenAHeartbeatCannotBeStored) {
    StoredPair tested(Keys{{"HeartBtInt", "1"}});
    ASSERT_TRUE(tested.logOn());
    tested.store.failingCommits = 1;
    ASSERT_TRUE(tested.pair.ours.waitFor("down"));
    EXPECT_EQ(tested.pair.ours.linesWith("! "), Lines{"! storage the disk is full"});
    EXPECT_TRUE(tested.pair.peer.waitFor("0").empty());
    EXPECT_EQ(tested.pair.us->nextSenderNumber(), 2);
    EXPECT_EQ(tested.pair.ours.linesWith("off").size(), 1u);
}

TEST(FixSessionStore, ConnectsAgainAfterALogonThatCouldNotBeStored) {
    StoredPair tested;
    tested.store.failingCommits = 1;
    tested.pair.us->start({});
    ASSERT_TRUE(tested.pair.peer.accept());
    EXPECT_TRUE(tested.pair.peer.waitFor("A").empty());
    ASSERT_TRUE(tested.pair.peer.logOn());
    EXPECT_TRUE(tested.pair.ours.waitFor("on"));
    EXPECT_EQ(tested.pair.ours.entries().front().seq, 1);
}

TEST(FixSessionStore, IsNotLoggedOnByALogonThatCouldNotBeStored) {
    StoredPair tested;
    tested.pair.us->start({});
    ASSERT_TRUE(tested.pair.peer.accept());
    ASSERT_FALSE(tested.pair.peer.waitFor("A").empty());
    tested.store.failingCommits = 1;
    tested.pair.peer.send("A", "98=0|108=5|");
    ASSERT_TRUE(tested.pair.ours.waitFor("down"));
    EXPECT_TRUE(tested.pair.ours.linesWith("on").empty());
    EXPECT_TRUE(tested.pair.ours.linesWith("off").empty());
    EXPECT_EQ(tested.pair.us->nextTargetNumber(), 1);
}

TEST(FixSessionStore, EndsTheLinkWhenWhatIsAskedForAgainCannotBeRead) {
    StoredPair tested;
    ASSERT_TRUE(tested.logOn());
    ASSERT_EQ(tested.send("out"), FixSendResult::sent);
    tested.store.failingReads = 1;
    tested.pair.peer.send("2", "7=1|16=0|");
    ASSERT_TRUE(tested.pair.ours.waitFor("down"));
    EXPECT_EQ(tested.pair.ours.linesWith("! ").front(), "! storage the disk is full");
    EXPECT_EQ(tested.pair.us->nextTargetNumber(), 2);
}

void sendNumbered(FixSession& session, int count) {
    std::vector<FixOutgoing> messages;
    for (int i = 0; i < count; ++i)
        messages.push_back({"B", {{148, std::to_string(i)}}});
    std::vector<long> ids;
    ASSERT_EQ(session.send(messages, 5s, ids), FixSendResult::sent);
}

TEST(FixSessionStore, SendsMuchAgainInPartsAndInOrder) {
    StoredPair tested;
    ASSERT_TRUE(tested.logOn());
    RawPeer& peer = tested.pair.peer;
    sendNumbered(*tested.pair.us, 1234);
    for (int i = 0; i < 1234; ++i)
        ASSERT_FALSE(peer.waitFor("B").empty());
    int const before = tested.store.commits;
    peer.send("2", "7=1|16=0|");
    for (int i = 0; i < 1234; ++i) {
        std::string const again = peer.waitFor("B");
        ASSERT_NE(again.find("|34=" + std::to_string(i + 2) + "|"), std::string::npos) << again;
        ASSERT_NE(again.find("|148=" + std::to_string(i) + "|"), std::string::npos) << again;
    }
    EXPECT_EQ(tested.pair.us->nextTargetNumber(), 3);
    EXPECT_EQ(tested.pair.us->nextSenderNumber(), 1236);
    EXPECT_EQ(tested.store.commits - before, 3);
    peer.send("1", "112=still there|");
    EXPECT_FALSE(peer.waitFor("0").empty());
    EXPECT_EQ(tested.pair.ours.linesWith("|35=2|").size(), 1u);
    EXPECT_TRUE(tested.pair.ours.linesWith("! ").empty()) << tested.pair.ours.linesWith("! ")[0];
}

TEST(FixSessionStore, SendsAgainNoMoreThanWasAskedFor) {
    StoredPair tested;
    ASSERT_TRUE(tested.logOn());
    RawPeer& peer = tested.pair.peer;
    sendNumbered(*tested.pair.us, 1100);
    for (int i = 0; i < 1100; ++i)
        ASSERT_FALSE(peer.waitFor("B").empty());
    peer.send("2", "7=3|16=702|");
    for (int i = 3; i <= 702; ++i)
        ASSERT_NE(peer.waitFor("B").find("|34=" + std::to_string(i) + "|"), std::string::npos);
    std::this_thread::sleep_for(50ms);
    EXPECT_FALSE(peer.hasBytes());
}

// What is sent again is much more than may wait for the counterparty.
TEST(FixSessionStore, WaitsForACounterpartyThatIsSlowToTakeWhatItAskedFor) {
    StoredPair tested(Keys{{"HeartBtInt", "60"}});
    ASSERT_TRUE(tested.logOn());
    RawPeer& peer = tested.pair.peer;
    int const count = 2500;
    std::thread reader([&] {
        for (int i = 0; i < count; ++i)
            ASSERT_FALSE(peer.waitFor("B").empty());
    });
    FixFields const body = {{58, std::string(8000, 'x')}};
    for (int i = 0; i < count; ++i)
        ASSERT_EQ(sendOne(*tested.pair.us, "B", body, 5s), FixSendResult::sent);
    reader.join();
    peer.send("2", "7=1|16=0|");
    std::this_thread::sleep_for(300ms);
    for (int i = 0; i < count; ++i)
        ASSERT_NE(peer.waitFor("B").find("|34=" + std::to_string(i + 2) + "|"), std::string::npos);
    EXPECT_TRUE(tested.pair.ours.linesWith("! ").empty());
}

TEST(FixSessionStore, FillsTheGapOfNumbersThatCannotBeHad) {
    WatchedStore store;
    store.lock();
    store.setNumbers({8, 1});
    store.commit();
    store.unlock();
    RawPair pair({}, &store);
    ASSERT_TRUE(pair.logOn());
    pair.peer.send("2", "7=3|16=6|");
    std::string const fill = pair.peer.waitFor("4");
    EXPECT_NE(fill.find("|34=3|"), std::string::npos) << fill;
    EXPECT_NE(fill.find("|36=7|"), std::string::npos) << fill;
}

TEST(FixSessionNumbers, BeginAgainOnBothSidesAfterAReset) {
    StoredPair tested;
    ASSERT_TRUE(tested.logOn());
    ASSERT_EQ(tested.send("old"), FixSendResult::sent);
    tested.pair.us->stop();
    tested.pair.us->resetNumbers("reset by joe");
    EXPECT_EQ(tested.pair.us->nextSenderNumber(), 1);
    EXPECT_EQ(tested.pair.us->nextTargetNumber(), 1);
    FixEntry const remark = tested.pair.ours.entries().back();
    EXPECT_EQ(remark.stream, FixStream::adminOut);
    EXPECT_EQ(remark.origin, FixOrigin::remark);
    EXPECT_EQ(remark.note, "reset by joe");
    EXPECT_EQ(remark.text, "");
    tested.pair.us->start({});
    ASSERT_TRUE(tested.pair.peer.accept());
    std::string const logon = tested.pair.peer.waitFor("A");
    EXPECT_NE(logon.find("|34=1|"), std::string::npos) << logon;
    EXPECT_NE(logon.find("|141=Y|"), std::string::npos) << logon;
    tested.pair.peer.number = 1;
    tested.pair.peer.send("A", "98=0|108=5|141=Y|");
    ASSERT_TRUE(tested.pair.ours.waitFor("on", 2)) << tested.pair.ours.all();
    EXPECT_EQ(tested.pair.us->nextSenderNumber(), 2);
    EXPECT_EQ(tested.pair.us->nextTargetNumber(), 2);
}

TEST(FixSessionNumbers, AreAskedToBeResetUntilALogonSucceeded) {
    StoredPair tested;
    tested.pair.us->resetNumbers("reset");
    tested.pair.us->start({});
    RawPeer& peer = tested.pair.peer;
    for (int attempt = 0; attempt < 2; ++attempt) {
        ASSERT_TRUE(peer.accept());
        std::string const logon = peer.waitFor("A");
        EXPECT_NE(logon.find("|34=1|"), std::string::npos) << logon;
        EXPECT_NE(logon.find("|141=Y|"), std::string::npos) << logon;
    }
    peer.number = 1;
    peer.send("A", "98=0|108=5|141=Y|");
    ASSERT_TRUE(tested.pair.ours.waitFor("on"));
    ASSERT_TRUE(peer.accept());
    std::string const next = peer.waitFor("A");
    EXPECT_NE(next.find("|34=2|"), std::string::npos) << next;
    EXPECT_EQ(next.find("|141="), std::string::npos) << next;
}

TEST(FixSessionNumbers, AreAskedToBeResetByTheNextProcessToo) {
    WatchedStore store;
    {
        RawPair pair({}, &store);
        pair.us->resetNumbers("reset");
        pair.us->resetNumbers("and again");
    }
    {
        RawPair pair({}, &store);
        pair.us->start({});
        ASSERT_TRUE(pair.peer.accept());
        EXPECT_NE(pair.peer.waitFor("A").find("|34=1|"), std::string::npos);
        pair.peer.send("5", "58=not today|");
        ASSERT_TRUE(pair.ours.waitFor("|58=not today|"));
    }
    {
        RawPair pair({}, &store);
        pair.us->start({});
        ASSERT_TRUE(pair.peer.accept());
        std::string const logon = pair.peer.waitFor("A");
        EXPECT_NE(logon.find("|34=1|"), std::string::npos) << logon;
        EXPECT_NE(logon.find("|141=Y|"), std::string::npos) << logon;
        pair.peer.send("A", "98=0|108=5|141=Y|");
        ASSERT_TRUE(pair.ours.waitFor("on"));
    }
    RawPair pair({}, &store);
    pair.us->start({});
    ASSERT_TRUE(pair.peer.accept());
    std::string const logon = pair.peer.waitFor("A");
    EXPECT_NE(logon.find("|34=2|"), std::string::npos) << logon;
    EXPECT_EQ(logon.find("|141="), std::string::npos) << logon;
}

// The answer to the Logon is lost with its transaction.
TEST(FixSessionNumbers, AreAskedToBeResetAgainWhenTheLogonCannotBeStored) {
    StoredPair tested;
    tested.pair.us->resetNumbers("reset");
    tested.pair.us->start({});
    ASSERT_TRUE(tested.pair.peer.accept());
    ASSERT_FALSE(tested.pair.peer.waitFor("A").empty());
    tested.store.failingCommits = 1;
    tested.pair.peer.send("A", "98=0|108=5|141=Y|");
    ASSERT_TRUE(tested.pair.peer.accept());
    EXPECT_NE(tested.pair.peer.waitFor("A").find("|141=Y|"), std::string::npos);
}

// Its numbers are 1 already after that Logon, which must not keep it from asking.
TEST(FixSessionNumbers, AreAskedToBeResetUntilALogonSucceededWhereAKeySaysSo) {
    for (char const* key : {"ResetOnLogon", "ResetOnLogout", "ResetOnDisconnect"}) {
        WatchedStore store;
        for (int attempt = 0; attempt < 2; ++attempt) {
            RawPair pair({{key, "Y"}}, &store);
            pair.us->start({});
            ASSERT_TRUE(pair.peer.accept());
            std::string const logon = pair.peer.waitFor("A");
            EXPECT_NE(logon.find("|34=1|"), std::string::npos) << key << logon;
            EXPECT_NE(logon.find("|141=Y|"), std::string::npos) << key << logon;
        }
    }
}

TEST(FixSessionNumbers, BeginAgainWhenTheCounterpartyAsksForIt) {
    WatchedStore store;
    store.lock();
    store.setNumbers({7, 9});
    store.commit();
    store.unlock();
    RawPair pair({}, &store);
    pair.us->start({});
    ASSERT_TRUE(pair.peer.accept());
    EXPECT_NE(pair.peer.waitFor("A").find("|34=7|"), std::string::npos);
    pair.peer.send("A", "98=0|108=5|141=Y|");
    ASSERT_TRUE(pair.ours.waitFor("on")) << pair.ours.all();
    EXPECT_EQ(pair.us->nextTargetNumber(), 2);
    pair.us->stop();
    pair.us->start({});
    ASSERT_TRUE(pair.peer.accept());
    EXPECT_EQ(pair.peer.waitFor("A").find("|141="), std::string::npos);
}

TEST(FixSessionNumbers, CanBeSetWithARemarkForEach) {
    StoredPair tested;
    ASSERT_TRUE(tested.logOn());
    tested.pair.us->stop();
    tested.pair.us->setNumbers({5, 4}, {"out by joe", "in by joe"});
    EXPECT_EQ(tested.pair.us->nextSenderNumber(), 5);
    EXPECT_EQ(tested.pair.us->nextTargetNumber(), 4);
    EXPECT_EQ(tested.pair.ours.linesWith("by joe: ").size(), 2u);
    tested.pair.peer.number = 4;
    tested.pair.us->start({});
    ASSERT_TRUE(tested.pair.peer.accept());
    std::string const logon = tested.pair.peer.waitFor("A");
    EXPECT_NE(logon.find("|34=5|"), std::string::npos) << logon;
    EXPECT_EQ(logon.find("|141="), std::string::npos) << logon;
    tested.pair.peer.send("A", "98=0|108=5|");
    ASSERT_TRUE(tested.pair.ours.waitFor("on", 2)) << tested.pair.ours.all();
    EXPECT_TRUE(tested.pair.ours.linesWith("|35=2|").empty());
}

TEST(FixSessionNumbers, StayWhenTheResetCannotBeStored) {
    StoredPair tested;
    ASSERT_TRUE(tested.logOn());
    tested.pair.us->stop();
    tested.store.failingCommits = 1;
    EXPECT_THROW(tested.pair.us->resetNumbers("reset"), std::runtime_error);
    EXPECT_EQ(tested.pair.us->nextSenderNumber(), 2);
    EXPECT_TRUE(tested.pair.ours.waitFor("! storage the disk is full"));
    tested.pair.us->start({});
    ASSERT_TRUE(tested.pair.peer.accept());
    EXPECT_EQ(tested.pair.peer.waitFor("A").find("|141="), std::string::npos);
}

} // namespace
