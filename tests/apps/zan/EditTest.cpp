// Edits of the log, their audit, and the marks of guaranteed listeners.
#include "apps/zan/ZanFixture.h"

namespace {

class Edit : public ZanTest {
protected:
    void SetUp() override {
        ZanTest::SetUp();
        useCounterparty();
        ASSERT_EQ(zan({"send", "C", order("one"), "--wait", "20", "--answers", "3"}).code, 0);
    }
};

TEST_F(Edit, AsksWithTheNumberOfEntries) {
    RunResult run = onTerminal(
        100, {"edit", "delete", "C", "--where", "type = '8'", "--color", "never"}, "n\n");
    EXPECT_EQ(run.code, 2);
    EXPECT_NE(run.output.find("Delete 3 entries of the log of C? [y/N]"), std::string::npos)
        << run.output;
    run = zan({"edit", "delete", "C", "--where", "type = '8'"});
    EXPECT_EQ(run.code, 2);
    EXPECT_EQ(lines(zan({"log", "--where", "type = '8'"}).output).size(), 4U);
}

TEST_F(Edit, ChangesAndDeletesAndLeavesAnAudit) {
    RunResult run = zan({"--user", "alice", "--json", "edit", "update", "C", "note = 'seen'",
                         "--where", "type = 'D'", "--yes"});
    EXPECT_EQ(run.output, "{\"name\":\"C\",\"entries\":1}\n") << run.errors;
    run = zan({"--user", "bob", "--json", "edit", "delete", "C", "--where", "type = '8'", "-y"});
    EXPECT_EQ(run.output, "{\"name\":\"C\",\"entries\":3}\n") << run.errors;
    EXPECT_EQ(zan({"log", "--where", "note = 'seen'", "--columns", "type,note"}).output,
              "type             note\nNewOrderSingle   seen\n");
    EXPECT_EQ(zan({"audit", "--columns", "user,action,type"}).output,
              "user   action  type\n"
              "alice  update  NewOrderSingle\n"
              "bob    delete  ExecutionReport\n"
              "bob    delete  ExecutionReport\n"
              "bob    delete  ExecutionReport\n");
    EXPECT_EQ(objects(zan({"--json", "audit", "--where", "user = 'bob'"}).output).size(), 3U);
}

TEST_F(Edit, PutsMessagesIn) {
    RunResult const run = zan({"--json", "edit", "insert", "C", "-y",
                               "35=B|34=7|49=THEM|56=US|52=20261121-09:00:00|148=news|33=1|58=x"});
    EXPECT_EQ(run.output, "{\"name\":\"C\",\"entries\":1}\n") << run.errors;
    EXPECT_EQ(zan({"log", "--where", "type = 'B'", "--columns", "stream,Headline"}).output,
              "stream     Headline\napp-in     news\n");
}

TEST_F(Edit, ShowsAndForgetsMarks) {
    environment_["ZAN_URL"] += "?client=desk";
    RunResult run = zan({"--json", "marks", "C"});
    auto const streams = objects(run.output);
    ASSERT_EQ(streams.size(), 5U) << run.errors;
    EXPECT_EQ(streams[2]["client"], "desk");
    EXPECT_EQ(streams[2]["mark"], nullptr);
    EXPECT_EQ(streams[2]["waiting"], 3);
    run = zan({"marks", "C", "--reset"});
    EXPECT_EQ(run.errors,
              "zan: nobody can answer: Forget the marks of desk at C? --yes would be right\n");
    EXPECT_EQ(zan({"marks", "C", "--reset", "--yes"}).code, 0);
}

TEST_F(Edit, TakesEditsBack) {
    std::string const before = zan({"--json", "log"}).output;
    zan({"--user", "alice", "edit", "update", "C", "note = 'seen'", "--where", "type = 'D'", "-y"});
    zan({"--user", "bob", "edit", "delete", "C", "--where", "type = '8'", "-y"});
    EXPECT_NE(zan({"--json", "log"}).output, before);
    RunResult const asked = onTerminal(
        100, {"edit", "undo", "C", "--where", "user = 'bob'", "--color", "never"}, "n\n");
    EXPECT_NE(asked.output.find("Take back the edits that the audit tells in 3 entries"),
              std::string::npos)
        << asked.output;
    RunResult const undone =
        zan({"--json", "edit", "undo", "C", "--where", "edited > '2000'", "-y"});
    EXPECT_EQ(undone.output, "{\"name\":\"C\",\"entries\":4}\n") << undone.errors;
    EXPECT_EQ(zan({"--json", "log"}).output, before);
}

} // namespace
