// Which entries the store of a session gets, and in which order.
#include "server/sessions/StoredPair.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <thread>

namespace {

using namespace zan::server;
using namespace std::chrono_literals;

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

INSTANTIATE_TEST_SUITE_P(
    Reasons, RefusedMessages,
    testing::Values(Refused{"BadField", "B", "148|", 0, "appIn", "Invalid tag number", "3"},
                    Refused{"BadAdminField", "1", "112=|", 0, "adminIn",
                            "Tag specified without a value (tag 112)", "3"},
                    Refused{"NumberTooLow", "B", "148=x|", 1, "appIn",
                            "MsgSeqNum too low, expecting 2 but received 1", "5"},
                    Refused{"RepetitionWithoutItsTime", "B", "43=Y|148=x|", 1, "appIn",
                            "Required tag missing (tag 122)", "3"}),
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
