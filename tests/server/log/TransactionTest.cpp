// The session's side: entries and numbers that are committed together.
#include "server/log/LogFixture.h"

#include "infra/Time.h"

#include <chrono>
#include <thread>

namespace {

using namespace logtest;

using Ids = std::vector<long>;
using Numbers = std::vector<int>;

class LogTransaction : public LogTest {};

TEST_F(LogTransaction, NewLogBeginsWithTheNumbersOne) {
    EXPECT_EQ(log().numbers(), (FixNumbers{1, 1}));
    EXPECT_EQ(log().lastId(), 0);
    EXPECT_TRUE(read().empty());
}

TEST_F(LogTransaction, EntryIsReadAsItWasWritten) {
    FixEntry added = entry(FixStream::appIn, 7, "8=FIX.4.4|35=8|34=7|58=caf\xc3\xa9|10=000|");
    added.text += std::string("96=\0\x01\xff", 6);
    added.note = "seen";
    add(added);
    FixEntry const found = read().at(0);
    EXPECT_EQ(found.id, 1);
    EXPECT_EQ(found.stream, FixStream::appIn);
    EXPECT_EQ(found.origin, FixOrigin::wire);
    EXPECT_EQ(found.seq, 7);
    EXPECT_EQ(found.text, added.text);
    EXPECT_EQ(found.note, "seen");
}

TEST_F(LogTransaction, EntryHasTheTimeOfItsAppending) {
    long long const before = infra::Time::now().getMillis();
    send("11=A|");
    long long const after = infra::Time::now().getMillis();
    EXPECT_GE(read().at(0).millis, before);
    EXPECT_LE(read().at(0).millis, after);
}

TEST_F(LogTransaction, CommitReturnsItsEntriesInTheirOrder) {
    Turn const turn(log());
    log().append(entry(FixStream::appOut, 1, "35=D|11=A|"));
    log().append(entry(FixStream::appOut, 2, "35=D|11=B|"));
    std::vector<FixEntry> const entries = log().commit();
    ASSERT_EQ(entries.size(), 2u);
    EXPECT_EQ(entries[0].id, 1);
    EXPECT_EQ(entries[1].id, 2);
    EXPECT_EQ(entries[1].text, wire("35=D|11=B|"));
    EXPECT_LE(entries[0].millis, entries[1].millis);
}

TEST_F(LogTransaction, NothingIsReadBeforeTheCommit) {
    Turn const turn(log());
    log().append(entry(FixStream::appOut, 1, "35=D|"));
    EXPECT_TRUE(read().empty());
    EXPECT_EQ(log().lastId(), 0);
    log().commit();
    EXPECT_EQ(read().size(), 1u);
    EXPECT_EQ(log().lastId(), 1);
}

TEST_F(LogTransaction, CommitOfNothingReturnsNothing) {
    Turn const turn(log());
    log().setNumbers({1, 1});
    EXPECT_TRUE(log().commit().empty());
    EXPECT_EQ(log().lastId(), 0);
}

TEST_F(LogTransaction, RollingBackGivesNumbersAndIdsAgain) {
    send("11=A|");
    Turn const turn(log());
    EXPECT_EQ(log().append(entry(FixStream::appOut, 2, "35=D|11=B|")), 2);
    log().setNumbers({3, 5});
    log().rollBack();
    EXPECT_EQ(log().numbers(), (FixNumbers{2, 1}));
    EXPECT_EQ(log().append(entry(FixStream::appOut, 2, "35=D|11=C|")), 2);
    log().commit();
    EXPECT_EQ(read().size(), 2u);
    EXPECT_EQ(read().at(1).text, wire("35=D|11=C|"));
}

TEST_F(LogTransaction, EndOfTheTurnRollsBackWhatWasNotCommitted) {
    log().lock();
    log().append(entry(FixStream::appOut, 1, "35=D|"));
    log().setNumbers({2, 1});
    log().unlock();
    EXPECT_EQ(log().numbers(), (FixNumbers{1, 1}));
    log().lock();
    EXPECT_TRUE(log().commit().empty());
    log().unlock();
}

TEST_F(LogTransaction, NumbersAreThoseAfterTheNewestRowWhenItIsOpenedAgain) {
    send("11=A|");
    receive("37=X|");
    receive("37=Y|");
    EXPECT_EQ(log().numbers(), (FixNumbers{2, 3}));
    open();
    EXPECT_EQ(log().numbers(), (FixNumbers{2, 3}));
    EXPECT_EQ(log().lastId(), 3);
}

TEST_F(LogTransaction, NumbersMayBeSetBeforeTheirRowToo) {
    {
        Turn const turn(log());
        log().setNumbers({1, 2});
        log().append(entry(FixStream::appIn, 1, "35=8|"));
        log().commit();
    }
    open();
    EXPECT_EQ(log().numbers(), (FixNumbers{1, 2}));
    EXPECT_EQ(log().lastId(), 1);
}

TEST_F(LogTransaction, NumbersWithoutAMessageLastAndAreNoted) {
    {
        Turn const turn(log());
        log().setNumbers({5, 9});
        std::vector<FixEntry> const entries = log().commit();
        ASSERT_EQ(entries.size(), 1u);
        EXPECT_EQ(entries[0].origin, FixOrigin::remark);
        EXPECT_EQ(entries[0].note, "The next number out is 5, the next number in is 9.");
        EXPECT_EQ(entries[0].text, "");
    }
    EXPECT_TRUE(read().empty());
    open();
    EXPECT_EQ(log().numbers(), (FixNumbers{5, 9}));
}

TEST_F(LogTransaction, NumbersSetAfterTheRowOfTheTransactionNeedNoNote) {
    {
        Turn const turn(log());
        log().append(entry(FixStream::appOut, 1, "35=D|"));
        log().setNumbers({2, 1});
        log().append(entry(FixStream::appOut, 2, "35=D|"));
        log().setNumbers({3, 1});
        EXPECT_EQ(log().commit().size(), 2u);
    }
    open();
    EXPECT_EQ(log().numbers(), (FixNumbers{3, 1}));
}

TEST_F(LogTransaction, ResetBeginsANewNumbering) {
    send("11=A|");
    send("11=B|");
    long long const before = infra::Time::now().getMillis();
    {
        Turn const turn(log());
        log().reset();
        EXPECT_EQ(log().numbers(), (FixNumbers{1, 1}));
        EXPECT_TRUE(log().sent(1, 9).empty());
        log().commit();
        EXPECT_GE(log().numbering().began, before);
    }
    EXPECT_EQ(sentNumbers(1, 9), Numbers());
    send("11=C|");
    EXPECT_EQ(sentNumbers(1, 9), Numbers{1});
}

TEST_F(LogTransaction, NumberingIsKnownWhenTheLogIsOpenedAgain) {
    long long began = 0;
    send("11=A|");
    {
        Turn const turn(log());
        log().reset();
        log().commit();
        began = log().numbering().began;
    }
    open();
    EXPECT_EQ(log().numbers(), (FixNumbers{1, 1}));
    EXPECT_EQ(log().numbering().began, began);
    EXPECT_EQ(sentNumbers(1, 9), Numbers());
}

TEST_F(LogTransaction, NumberingIsKeptWithItsTransaction) {
    send("11=A|");
    {
        Turn const turn(log());
        log().setNumbering({5, true});
        log().rollBack();
        EXPECT_FALSE(log().numbering().asksForReset);
        log().reset();
        log().setNumbering({77'000, true});
        log().commit();
    }
    open();
    EXPECT_EQ(log().numbering().began, 77'000);
    EXPECT_TRUE(log().numbering().asksForReset);
    {
        Turn const turn(log());
        log().setNumbering({77'000, false});
        log().commit();
    }
    open();
    EXPECT_FALSE(log().numbering().asksForReset);
    EXPECT_EQ(log().numbers(), (FixNumbers{1, 1}));
}

TEST_F(LogTransaction, ResetIsRolledBack) {
    send("11=A|");
    long long const began = log().numbering().began;
    {
        Turn const turn(log());
        log().reset();
        log().append(entry(FixStream::adminOut, 1, "35=A|"));
        log().rollBack();
        EXPECT_EQ(log().numbering().began, began);
    }
    EXPECT_EQ(log().numbers(), (FixNumbers{2, 1}));
    EXPECT_EQ(sentNumbers(1, 9), Numbers{1});
}

TEST_F(LogTransaction, MessagesBeforeAndAfterAResetMayShareATransaction) {
    {
        Turn const turn(log());
        log().append(entry(FixStream::appOut, 1, "35=D|11=OLD|"));
        log().setNumbers({2, 1});
        log().reset();
        log().append(entry(FixStream::appOut, 1, "35=D|11=NEW|"));
        log().setNumbers({2, 1});
        ASSERT_EQ(log().sent(1, 1).size(), 1u);
        EXPECT_EQ(log().sent(1, 1)[0].text, wire("35=D|11=NEW|"));
        EXPECT_EQ(log().commit().size(), 2u);
    }
    open();
    Turn const turn(log());
    ASSERT_EQ(log().sent(1, 1).size(), 1u);
    EXPECT_EQ(log().sent(1, 1)[0].text, wire("35=D|11=NEW|"));
}

TEST_F(LogTransaction, NumbersOutThatComeAgainStandForTheirNewMessages) {
    send("11=A|");
    send("11=B|");
    {
        Turn const turn(log());
        log().setNumbers({1, 1});
        log().commit();
    }
    send("11=C|");
    Turn const turn(log());
    ASSERT_EQ(log().sent(1, 9).size(), 1u);
    EXPECT_NE(log().sent(1, 9)[0].text.find("11=C"), std::string::npos);
}

TEST_F(LogTransaction, NumbersInMayFall) {
    receive("37=A|");
    send("11=A|");
    {
        Turn const turn(log());
        log().setNumbers({2, 1});
        log().commit();
    }
    EXPECT_EQ(log().numbers(), (FixNumbers{2, 1}));
    EXPECT_EQ(sentNumbers(1, 9), Numbers{1});
}

TEST_F(LogTransaction, MaySurviveAPowerFailure) {
    settings_.survivesPowerFailure = true;
    open();
    send("11=A|");
    open();
    EXPECT_EQ(log().numbers(), (FixNumbers{2, 1}));
    EXPECT_EQ(read().size(), 1u);
}

TEST_F(LogTransaction, MovesIntoTheFileItselfWhileTheLogIsIdle) {
    for (int i = 0; i < 20; ++i) {
        receive("58=" + std::string(5'000, 'x') + "|");
    }
    EXPECT_LT(std::filesystem::file_size(folder_.file()), 100'000u);
    std::this_thread::sleep_for(std::chrono::milliseconds(150));
    log().maintain();
    EXPECT_GT(std::filesystem::file_size(folder_.file()), 100'000u);
    EXPECT_EQ(read().size(), 20u);
}

class SentMessages : public LogTest {};

TEST_F(SentMessages, AreThoseUnderTheNumbersAskedFor) {
    for (int i = 0; i < 20; ++i) {
        send("11=A|", i % 3 ? FixStream::appOut : FixStream::adminOut);
        receive("37=X|");
    }
    EXPECT_EQ(sentNumbers(5, 8), (Numbers{5, 6, 7, 8}));
    EXPECT_EQ(sentNumbers(1, 1), Numbers{1});
    EXPECT_EQ(sentNumbers(20, 20), Numbers{20});
    EXPECT_EQ(sentNumbers(19, 0), (Numbers{19, 20}));
    EXPECT_EQ(sentNumbers(21, 30), Numbers());
    EXPECT_EQ(sentNumbers(8, 5), Numbers());
}

TEST_F(SentMessages, LeaveOutNumbersThatWereNeverUsed) {
    send("11=A|");
    {
        Turn const turn(log());
        log().setNumbers({10, 1});
        log().commit();
    }
    send("11=B|");
    EXPECT_EQ(sentNumbers(1, 10), (Numbers{1, 10}));
    EXPECT_EQ(sentNumbers(2, 9), Numbers());
}

TEST_F(SentMessages, DoNotCountWhatWasSentAgainOrNeverSent) {
    send("11=A|");
    add(entry(FixStream::resent, 1, "35=D|34=1|43=Y|", FixOrigin::again));
    add(entry(FixStream::appOut, 1, "35=D|34=1|", FixOrigin::inserted));
    add(entry(FixStream::appIn, 1, "35=8|34=1|"));
    add(entry(FixStream::appIn, 0, "35=8|", FixOrigin::internal));
    EXPECT_EQ(sentNumbers(1, 5), Numbers{1});
}

TEST_F(SentMessages, IncludeThoseOfTheOpenTransaction) {
    send("11=A|");
    Turn const turn(log());
    log().append(entry(FixStream::resent, 2, "35=D|34=2|"));
    log().setNumbers({3, 1});
    std::vector<FixEntry> const sent = log().sent(1, 2);
    ASSERT_EQ(sent.size(), 2u);
    EXPECT_EQ(sent[1].seq, 2);
    EXPECT_EQ(log().sent(1, 1).size(), 1u);
}

class ReadingByRange : public LogTest {
protected:
    ReadingByRange() {
        send("11=A|");
        receive("37=X|");
        add(entry(FixStream::adminIn, 3, "35=0|"));
        add(entry(FixStream::adminOut, 3, "35=0|"));
        receive("37=Y|");
    }
};

TEST_F(ReadingByRange, GivesEverythingInTheOrderOfIds) {
    EXPECT_EQ(readIds(), (Ids{1, 2, 3, 4, 5}));
}

TEST_F(ReadingByRange, TurnsTheOrderRound) {
    LogQuery query;
    query.newestFirst = true;
    EXPECT_EQ(readIds(query), (Ids{5, 4, 3, 2, 1}));
}

TEST_F(ReadingByRange, IncludesBothEndsOfARangeOfIds) {
    LogQuery query;
    query.ids = std::pair(2L, 4L);
    EXPECT_EQ(readIds(query), (Ids{2, 3, 4}));
    query.ids = std::pair(4L, 2L);
    EXPECT_EQ(readIds(query), Ids());
    query.ids = std::pair(-5L, 99L);
    EXPECT_EQ(readIds(query).size(), 5u);
}

TEST_F(ReadingByRange, TakesOneStreamOnly) {
    LogQuery query;
    query.stream = 2;
    EXPECT_EQ(readIds(query), (Ids{2, 5}));
    query.stream = 0;
    EXPECT_EQ(readIds(query), Ids{3});
}

TEST_F(ReadingByRange, IncludesBothEndsOfARangeOfTimes) {
    std::vector<FixEntry> const all = read();
    for (FixEntry const& first : all) {
        for (FixEntry const& last : all) {
            LogQuery query;
            query.millis = std::pair<std::int64_t, std::int64_t>(first.millis, last.millis);
            Ids expected;
            for (FixEntry const& each : all) {
                if (each.millis >= first.millis && each.millis <= last.millis) {
                    expected.push_back(each.id);
                }
            }
            EXPECT_EQ(readIds(query), expected);
        }
    }
}

TEST_F(ReadingByRange, TakesTimesOfAnyDistance) {
    LogQuery query;
    query.millis = std::pair<std::int64_t, std::int64_t>(INT64_MIN, INT64_MAX);
    EXPECT_EQ(readIds(query).size(), 5u);
    query.millis = std::pair<std::int64_t, std::int64_t>(0, 1000);
    EXPECT_EQ(readIds(query).size(), 0u);
    query.millis = std::pair<std::int64_t, std::int64_t>(INT64_MAX, INT64_MAX);
    EXPECT_EQ(readIds(query).size(), 0u);
}

TEST_F(ReadingByRange, GivesOnlyTheIdsOfAStream) {
    EXPECT_EQ(log().ids(-1, false), (std::vector<int>{1, 2, 3, 4, 5}));
    EXPECT_EQ(log().ids(2, true), (std::vector<int>{5, 2}));
    EXPECT_EQ(log().ids(4, true), std::vector<int>());
}

TEST_F(ReadingByRange, LeavesOutNotesWithoutAMessage) {
    FixEntry note;
    note.origin = FixOrigin::remark;
    note.note = "for people";
    add(note);
    EXPECT_EQ(readIds().size(), 5u);
    EXPECT_EQ(log().ids(-1, false).size(), 5u);
}

TEST_F(ReadingByRange, PassesOnWhatTheReceiverThrowsAndCanBeReadAgain) {
    EXPECT_THROW(log().read({}, [](FixEntry&&) { throw std::runtime_error("enough"); }),
                 std::runtime_error);
    EXPECT_EQ(readIds().size(), 5u);
}

TEST_F(ReadingByRange, ShowsTheMomentWhenItBegan) {
    Ids ids;
    log().read({}, [&](FixEntry&& found) {
        ids.push_back(found.id);
        send("11=LATER|");
    });
    EXPECT_EQ(ids.size(), 5u);
    EXPECT_EQ(readIds().size(), 10u);
}

TEST_F(ReadingByRange, MayAskTheLogWhileItReads) {
    std::size_t count = 0;
    log().read({}, [&](FixEntry&&) { count += readIds().size(); });
    EXPECT_EQ(count, 25u);
}

} // namespace
