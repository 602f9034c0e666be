// What a log tells operators about itself.
#include "LogFixture.h"

namespace {

using namespace logtest;
using namespace std::chrono_literals;

class OperatorsViewTest : public LogTest {};

TEST_F(OperatorsViewTest, CountsEveryCommit) {
    send("11=1|");
    send("11=2|");
    CommitFigures const figures = log().commitFigures();
    std::uint64_t count = 0;
    for (std::uint64_t const each : figures.counts) {
        count += each;
    }
    EXPECT_EQ(count, 2u);
    EXPECT_GT(figures.total, 0ns);
    EXPECT_EQ(figures.failures, 0u);
}

TEST_F(OperatorsViewTest, CountsNoTransactionThatIsRolledBack) {
    {
        Turn const turn(log());
        log().append(entry(FixStream::appOut, 1, "35=D|"));
    }
    EXPECT_EQ(log().commitFigures().counts, CommitFigures().counts);
}

TEST_F(OperatorsViewTest, PutsATimeIntoTheFirstClassThatHoldsIt) {
    CommitTimes times;
    times.succeeded(0ns);
    times.succeeded(25us);
    times.succeeded(25'001ns);
    times.succeeded(1s);
    times.succeeded(1h);
    times.failed();
    CommitFigures const figures = times.figures();
    EXPECT_EQ(figures.counts.front(), 2u);
    EXPECT_EQ(figures.counts[1], 1u);
    EXPECT_EQ(figures.counts[figures.counts.size() - 2], 1u);
    EXPECT_EQ(figures.counts.back(), 1u);
    EXPECT_EQ(figures.total, 1h + 1s + 50'001ns);
    EXPECT_EQ(figures.failures, 1u);
}

TEST_F(OperatorsViewTest, ListsTheMarks) {
    log().setMark("b", FixStream::appIn, 7);
    log().setMark("a", FixStream::appOut, 3);
    log().setMark("c", FixStream::appIn, 1);
    log().resetMarks("c");
    std::vector<LogMark> const marks = log().marks();
    ASSERT_EQ(marks.size(), 2u);
    EXPECT_EQ(marks[0].subscriber, "a");
    EXPECT_EQ(marks[0].stream, FixStream::appOut);
    EXPECT_EQ(marks[0].id, 3);
    EXPECT_EQ(marks[1].subscriber, "b");
}

TEST_F(OperatorsViewTest, FindsTheNewestMessageForListenersInAStream) {
    EXPECT_EQ(log().newestDelivered(FixStream::appOut), 0);
    long const sent = send("11=1|");
    long const received = receive("11=1|");
    add(entry(FixStream::appOut, 0, "35=D|", FixOrigin::inserted));
    add(entry(FixStream::appIn, 0, "35=8|", FixOrigin::remark));
    long const posted = add(entry(FixStream::adminIn, 0, "35=8|", FixOrigin::internal));
    EXPECT_EQ(log().newestDelivered(FixStream::appOut), sent);
    EXPECT_EQ(log().newestDelivered(FixStream::appIn), received);
    EXPECT_EQ(log().newestDelivered(FixStream::adminIn), posted);
    EXPECT_EQ(log().newestDelivered(FixStream::resent), 0);
}

TEST_F(OperatorsViewTest, TellsTheSizeOfItsFiles) {
    send("11=1|58=" + std::string(100'000, 'x') + "|");
    LogSizes const sizes = log().sizes();
    EXPECT_GT(sizes.messages, 100'000u);
    EXPECT_GT(sizes.reserve, 0u);
    log_.reset();
    EXPECT_GE(sizes.messages, std::filesystem::file_size(folder_.file()));
}

} // namespace
