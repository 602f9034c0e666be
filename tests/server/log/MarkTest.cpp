// Marks of guaranteed listeners.
#include "server/log/LogFixture.h"

namespace {

using namespace logtest;

class Marks : public LogTest {
protected:
    int mark(std::string const& subscriber, FixStream stream = FixStream::appIn) {
        return log().mark(subscriber, stream);
    }
};

TEST_F(Marks, AreNoneAtFirst) {
    EXPECT_EQ(mark("desk"), -1);
}

TEST_F(Marks, AreSeenAtOnce) {
    log().setMark("desk", FixStream::appIn, 0);
    EXPECT_EQ(mark("desk"), 0);
    log().setMark("desk", FixStream::appIn, 12);
    EXPECT_EQ(mark("desk"), 12);
}

TEST_F(Marks, BelongToOneSubscriberAndOneStream) {
    log().setMark("desk", FixStream::appIn, 12);
    EXPECT_EQ(mark("risk"), -1);
    EXPECT_EQ(mark("desk", FixStream::appOut), -1);
}

TEST_F(Marks, NeverFall) {
    log().setMark("desk", FixStream::appIn, 12);
    log().setMark("desk", FixStream::appIn, 11);
    EXPECT_EQ(mark("desk"), 12);
    log().flushMarks();
    open();
    log().setMark("desk", FixStream::appIn, 5);
    EXPECT_EQ(mark("desk"), 12);
}

TEST_F(Marks, LastWhenTheyWereFlushed) {
    log().setMark("desk", FixStream::appIn, 12);
    log().setMark("it's \"odd\"", FixStream::appOut, 7);
    log().flushMarks();
    open();
    EXPECT_EQ(mark("desk"), 12);
    EXPECT_EQ(mark("it's \"odd\"", FixStream::appOut), 7);
}

TEST_F(Marks, LastAfterMaintenance) {
    log().setMark("desk", FixStream::appIn, 12);
    log().maintain();
    std::string const copy = folder_.file("copy.log");
    for (char const* suffix : {"", "-wal"}) {
        std::filesystem::copy_file(folder_.file() + suffix, copy + suffix);
    }
    MessageLog const copied(LogSettings{copy});
    EXPECT_EQ(copied.mark("desk", FixStream::appIn), 12);
}

TEST_F(Marks, AreForgottenWhenTheyAreReset) {
    log().setMark("desk", FixStream::appIn, 12);
    log().setMark("risk", FixStream::appIn, 9);
    log().flushMarks();
    log().resetMarks("desk");
    EXPECT_EQ(mark("desk"), -1);
    log().flushMarks();
    open();
    EXPECT_EQ(mark("desk"), -1);
    EXPECT_EQ(mark("risk"), 9);
    log().setMark("desk", FixStream::appIn, 3);
    EXPECT_EQ(mark("desk"), 3);
    log().flushMarks();
    open();
    EXPECT_EQ(mark("desk"), 3);
}

TEST_F(Marks, CostNoTurn) {
    Turn const turn(log());
    log().append(entry(FixStream::appIn, 1, "35=8|"));
    log().setMark("desk", FixStream::appIn, 1);
    log().flushMarks();
    EXPECT_EQ(log().commit().size(), 1u);
}

} // namespace
