// The end of the log, and following it.
#include "apps/zan/ZanFixture.h"

#include <csignal>

namespace {

class Tail : public ZanTest {
protected:
    void SetUp() override {
        ZanTest::SetUp();
        useCounterparty();
        ASSERT_EQ(zan({"send", "C", order("one"), "--wait", "20", "--answers", "3"}).code, 0);
    }
};

TEST_F(Tail, ShowsTheNewestEntries) {
    RunResult const run = zan({"tail", "-n", "2", "--stream", "app-in", "--columns", "39"});
    EXPECT_EQ(run.output, "39\n1\n2\n");
    EXPECT_EQ(run.code, 0);
    EXPECT_EQ(run.errors, "zan: the engine is in this program and logs on only with --connect, so "
                          "nothing can come\n");
}

TEST_F(Tail, BeginsWithAnIdOrATime) {
    EXPECT_EQ(
        zan({"tail", "--from", "1", "--where", "type = 'D'", "--columns", "ClOrdID", "--no-follow"})
            .output,
        "ClOrdID\none\n");
    EXPECT_EQ(zan({"tail", "--from", "20200101", "--where", "type = 'D'", "--columns", "ClOrdID",
                   "--no-follow"})
                  .output,
              "ClOrdID\none\n");
    EXPECT_EQ(zan({"tail", "--from", "20990101", "--no-follow"}).output, "");
}

TEST_F(Tail, FollowsWhatComesAndEndsInOrder) {
    ProgramRun run(settings({"tail", "-n", "0", "--connect", "--columns", "stream,type"}, 80));
    ASSERT_TRUE(run.waitFor("admin-in   Logon")) << run.output();
    run.type("\x03");
    EXPECT_EQ(run.wait(), 130);
    EXPECT_NE(run.output().find("admin-out  Logon\nadmin-in   Logon\n"), std::string::npos)
        << run.output();
}

TEST_F(Tail, FollowsOnlyWhatTheExpressionIsTrueOf) {
    ProgramRun run(settings({"--json", "tail", "-n", "0", "--connect", "--where", "stream = 0"}));
    ASSERT_TRUE(run.waitFor("\"type\":\"A\""));
    run.sendSignal(SIGTERM);
    EXPECT_EQ(run.wait(), 130);
    EXPECT_EQ(objects(run.output()).size(), 1U) << run.output();
}

} // namespace
