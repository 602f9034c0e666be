#include "server/sessions/RawPair.h"
#include "server/sessions/WatchedStore.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <thread>

namespace {

using namespace zan::server;
using namespace std::chrono_literals;

/// A session over a watched store, against bare bytes.
struct StoredPair {
    explicit StoredPair(Keys const& keys = {}) : pair(keys, &store) {}

    bool logOn() { return pair.logOn(); }
    FixSendResult send(std::string const& title) { return sendOne(*pair.us, "B", {{148, title}}); }

    WatchedStore store;
    RawPair pair;
};

std::string describe(FixEntry const& entry) {
    static char const* const streams[] = {"adminIn", "adminOut", "appIn", "appOut", "resent"};
    static char const* const origins[] = {"wire", "again", "internal", "inserted", "remark"};
    return std::string(streams[static_cast<int>(entry.stream)]) + " " +
           origins[static_cast<int>(entry.origin)] + " " + fixValue(entry.text, 35) + " " +
           std::to_string(entry.seq);
}

std::vector<std::string> describe(std::vector<FixEntry> const& entries) {
    std::vector<std::string> lines;
    for (FixEntry const& entry : entries)
        lines.push_back(describe(entry));
    return lines;
}

using Lines = std::vector<std::string>;

TEST(FixSessionStore, GetsEveryMessageOfBothDirectionsInOrder) {
    StoredPair tested;
    ASSERT_TRUE(tested.logOn());
    ASSERT_EQ(tested.send("out"), FixSendResult::sent);
    tested.pair.peer.send("1", "112=ping|");
    tested.pair.peer.send("B", "148=in|");
    ASSERT_TRUE(tested.pair.ours.waitFor("|148=in|"));
    std::vector<FixEntry> const entries = tested.pair.ours.entries();
    EXPECT_EQ(describe(entries),
              (Lines{"adminOut wire A 1", "adminIn wire A 1", "appOut wire B 2", "adminIn wire 1 2",
                     "adminOut wire 0 3", "appIn wire B 3"}));
    for (std::size_t i = 0; i < entries.size(); ++i)
        EXPECT_EQ(entries[i].id, static_cast<long>(i) + 1);
    EXPECT_EQ(entries[2].text, tested.pair.ours.entries()[2].text);
}

TEST(FixSessionStore, GetsTheBytesAsTheyAreOnTheWire) {
    StoredPair tested;
    ASSERT_TRUE(tested.logOn());
    tested.send("out");
    std::string const sent = tested.pair.peer.waitFor("B");
    std::string const received = tested.pair.peer.framed("B", "20001=a|148=in|20001=b|");
    tested.pair.peer.sendBytes(received);
    ASSERT_TRUE(tested.pair.ours.waitFor("|148=in|"));
    EXPECT_EQ(tested.pair.ours.entries().back().text, received);
    EXPECT_EQ(tested.pair.ours.linesWith("|148=out|"), Lines{"> " + sent});
}

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

TEST(FixSessionStore, ReportsTheLogonsBeforeItIsOnAndTheRestAfter) {
    StoredPair tested;
    tested.pair.us->start({});
    RawPeer& peer = tested.pair.peer;
    ASSERT_TRUE(peer.accept());
    ASSERT_FALSE(peer.waitFor("A").empty());
    std::string const logon = peer.framed("A", "98=0|108=5|");
    peer.sendBytes(logon + peer.framed("B", "148=at once|"));
    ASSERT_TRUE(tested.pair.ours.waitFor("|148=at once|"));
    std::vector<std::string> kinds;
    for (std::string const& line : tested.pair.ours.lines())
        kinds.push_back(line.substr(0, line.find(' ')));
    EXPECT_EQ(kinds, (Lines{"up", ">", "<", "on", "<"})) << tested.pair.ours.all();
}

TEST(FixSessionStore, GetsWhatIsSentAgainAsRepetitions) {
    StoredPair tested;
    ASSERT_TRUE(tested.logOn());
    ASSERT_EQ(tested.send("one"), FixSendResult::sent);
    ASSERT_EQ(sendOne(*tested.pair.us, "0", {{112, "x"}}), FixSendResult::sent);
    tested.pair.peer.send("2", "7=1|16=0|");
    ASSERT_TRUE(tested.pair.ours.waitFor("|35=4|", 2));
    std::vector<FixEntry> const entries = tested.pair.ours.entries();
    EXPECT_EQ(describe({entries.begin() + 4, entries.end()}),
              (Lines{"adminIn wire 2 2", "adminOut again 4 1", "resent again B 2",
                     "adminOut again 4 3"}));
    EXPECT_EQ(tested.pair.us->nextSenderNumber(), 4);
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

TEST(FixSessionStore, KeepsWhatAnApplicationSendsAgainInItsOwnStream) {
    StoredPair tested;
    ASSERT_TRUE(tested.logOn());
    std::vector<long> ids;
    ASSERT_EQ(tested.pair.us->send({{"B", {{97, "Y"}, {148, "again"}}, true}}, 1s, ids),
              FixSendResult::sent);
    EXPECT_EQ(describe(tested.pair.ours.entries().back()), "resent wire B 2");
    tested.pair.peer.send("2", "7=2|16=2|");
    ASSERT_TRUE(tested.pair.ours.waitFor("|148=again|", 2));
    EXPECT_EQ(describe(tested.pair.ours.entries().back()), "resent again B 2");
}

TEST(FixSessionStore, LogsButDoesNotRepeatWhatIsNotToBePersisted) {
    StoredPair tested(Keys{{"PersistMessages", "N"}});
    ASSERT_TRUE(tested.logOn());
    ASSERT_EQ(tested.send("once"), FixSendResult::sent);
    EXPECT_EQ(describe(tested.pair.ours.entries().back()), "appOut wire B 2");
    tested.pair.peer.send("2", "7=1|16=0|");
    std::string const fill = tested.pair.peer.waitFor("4");
    EXPECT_NE(fill.find("|34=1|"), std::string::npos) << fill;
    EXPECT_NE(fill.find("|36=3|"), std::string::npos) << fill;
    EXPECT_EQ(tested.pair.ours.linesWith("|148=once|").size(), 1u);
}

TEST(FixSessionStore, GetsAMessageThatHasToWaitWhenItsTurnComes) {
    StoredPair tested;
    ASSERT_TRUE(tested.logOn());
    RawPeer& peer = tested.pair.peer;
    std::string const missing = peer.framed("B", "43=Y|122=20260101-00:00:00|148=2nd|");
    peer.send("B", "148=3rd|");
    ASSERT_FALSE(peer.waitFor("2").empty());
    EXPECT_TRUE(tested.pair.ours.linesWith("|148=3rd|").empty());
    peer.sendBytes(missing);
    ASSERT_TRUE(tested.pair.ours.waitFor("|148=3rd|"));
    std::vector<FixEntry> const entries = tested.pair.ours.entries();
    EXPECT_EQ(describe({entries.begin() + 2, entries.end()}),
              (Lines{"adminOut wire 2 2", "appIn wire B 2", "appIn wire B 3"}));
}

TEST(FixSessionStore, DoesNotGetRepetitionsOfWhatWasTaken) {
    StoredPair tested;
    ASSERT_TRUE(tested.logOn());
    RawPeer& peer = tested.pair.peer;
    peer.send("B", "148=news|");
    peer.number = 2;
    peer.send("B", "43=Y|122=20260101-00:00:00|148=news|");
    peer.send("1", "112=done|");
    ASSERT_TRUE(tested.pair.ours.waitFor("|35=0|"));
    EXPECT_EQ(tested.pair.ours.linesWith("|148=news|").size(), 1u);
}

struct Refused {
    char const* name;
    std::string type;
    std::string body;
    int number; // 0: the next one
    char const* stream;
    char const* note;
    char const* answer;
};

class RefusedMessages : public testing::TestWithParam<Refused> {};

TEST_P(RefusedMessages, AreRemarksBeforeTheAnswer) {
    StoredPair tested;
    ASSERT_TRUE(tested.logOn());
    RawPeer& peer = tested.pair.peer;
    if (GetParam().number != 0)
        peer.number = GetParam().number;
    std::string const message = peer.framed(GetParam().type, GetParam().body);
    peer.sendBytes(message);
    ASSERT_TRUE(tested.pair.ours.waitFor(std::string("|35=") + GetParam().answer + "|"))
        << tested.pair.ours.all();
    std::vector<FixEntry> const entries = tested.pair.ours.entries();
    EXPECT_EQ(describe(entries[2]), std::string(GetParam().stream) + " remark " + GetParam().type +
                                        " " + fixValue(message, 34));
    EXPECT_EQ(entries[2].text, message);
    EXPECT_EQ(entries[2].note, std::string("refused: ") + GetParam().note);
    EXPECT_EQ(fixValue(entries[3].text, 35), GetParam().answer);
    std::size_t const copies = static_cast<std::size_t>(
        std::count_if(entries.begin(), entries.end(),
                      [&](FixEntry const& entry) { return entry.text == message; }));
    EXPECT_EQ(copies, 1u);
}

INSTANTIATE_TEST_SUITE_P(Reasons, RefusedMessages,
                         testing::Values(Refused{"BadField", "B", "148|", 0, "appIn",
                                                 "no field: tag=value is expected (tag 148)", "3"},
                                         Refused{"BadAdminField", "1", "112=|", 0, "adminIn",
                                                 "no field: tag=value is expected (tag 112)", "3"},
                                         Refused{"NumberTooLow", "B", "148=x|", 1, "appIn",
                                                 "MsgSeqNum too low, expecting 2 but received 1",
                                                 "5"},
                                         Refused{"RepetitionWithoutItsTime", "B", "43=Y|148=x|", 1,
                                                 "appIn", "Required tag missing (tag 122)", "3"}),
                         [](auto const& tested) { return tested.param.name; });

TEST(FixSessionStore, GetsAMessageForSomebodyElseAsARemark) {
    StoredPair tested;
    ASSERT_TRUE(tested.logOn());
    RawPeer stranger("SOMEBODY", "US");
    stranger.number = 2;
    std::string const message = stranger.framed("B", "148=x|");
    tested.pair.peer.sendBytes(message);
    ASSERT_TRUE(tested.pair.ours.waitFor("|35=3|"));
    FixEntry const remark = tested.pair.ours.entries()[2];
    EXPECT_EQ(describe(remark), "appIn remark B 2");
    EXPECT_EQ(remark.text, message);
    EXPECT_EQ(remark.note, "refused: CompID problem");
}

TEST(FixSessionStore, GetsAMessageBeforeTheLogonAsARemark) {
    StoredPair tested;
    tested.pair.us->start({});
    ASSERT_TRUE(tested.pair.peer.accept());
    ASSERT_FALSE(tested.pair.peer.waitFor("A").empty());
    tested.pair.peer.send("B", "148=early|");
    ASSERT_TRUE(tested.pair.ours.waitFor("down"));
    EXPECT_EQ(tested.pair.ours.linesWith("|148=early|")
                  .front()
                  .find("# refused: Logon state is not valid for message: "),
              0u)
        << tested.pair.ours.all();
}

TEST(FixSessionStore, GetsGarbledBytesAsARemark) {
    StoredPair tested;
    ASSERT_TRUE(tested.logOn());
    RawPeer& peer = tested.pair.peer;
    std::string garbled = peer.framed("B", "148=lost|38=1|58=x|");
    garbled[garbled.size() - 2] = garbled[garbled.size() - 2] == '0' ? '1' : '0';
    peer.sendBytes(garbled);
    ASSERT_TRUE(tested.pair.ours.waitFor("# refused: "));
    FixEntry const remark = tested.pair.ours.entries().back();
    EXPECT_EQ(remark.origin, FixOrigin::remark);
    EXPECT_EQ(remark.text, garbled);
    EXPECT_NE(remark.note.find("CheckSum (10) is"), std::string::npos) << remark.note;
}

TEST(FixSessionStore, GetsOnlyTheBeginningOfMuchGarbage) {
    StoredPair tested;
    ASSERT_TRUE(tested.logOn());
    tested.pair.peer.sendBytes(std::string(20'000, 'x'));
    ASSERT_TRUE(tested.pair.ours.waitFor("# refused: "));
    for (FixEntry const& entry : tested.pair.ours.entries())
        EXPECT_LE(entry.text.size(), 4096u);
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

TEST(FixSessionStore, IsReportedToByOneThreadAtATimeInTheOrderOfTheLog) {
    SessionPair pair;
    ASSERT_TRUE(pair.logOn());
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 3; ++thread)
        threads.emplace_back([&pair] {
            for (int i = 0; i < 200; ++i)
                sendOne(*pair.us, "D", {{11, "x"}});
        });
    for (int i = 0; i < 200; ++i)
        sendOne(*pair.them, "8", {{11, "x"}});
    for (std::thread& thread : threads)
        thread.join();
    ASSERT_TRUE(pair.ours.waitFor("|35=8|", 200));
    ASSERT_TRUE(pair.theirs.waitFor("|35=D|", 600));
    for (SessionRecorder const* each : {&pair.ours, &pair.theirs}) {
        std::vector<FixEntry> const entries = each->entries();
        for (std::size_t i = 0; i < entries.size(); ++i)
            ASSERT_EQ(entries[i].id, static_cast<long>(i) + 1);
    }
}

} // namespace
