// Messages from arguments, files and standard input, and what comes back.
#include "apps/zan/ZanFixture.h"

#include <csignal>

namespace {

class Sending : public ZanTest {
protected:
    void SetUp() override {
        ZanTest::SetUp();
        useCounterparty();
    }

    // The ClOrdIDs of the orders that the log holds.
    std::string loggedOrders() const {
        std::string all;
        for (auto const& row :
             objects(zan({"--json", "log", "C", "--stream", "app-out", "--columns", "ClOrdID"})
                         .output)) {
            all += row["ClOrdID"].get<std::string>() + " ";
        }
        return all;
    }
};

TEST_F(Sending, ShowsTheOrderAndItsReports) {
    RunResult const run = zan({"send", "C", order("one"), "--wait", "20", "--answers", "3",
                               "--columns", "stream,type,ClOrdID,OrdStatus"});
    EXPECT_EQ(run.code, 0) << run.errors;
    EXPECT_EQ(run.output, "stream     type             ClOrdID  OrdStatus\n"
                          "app-out    NewOrderSingle   one\n"
                          "app-in     ExecutionReport  one      0\n"
                          "app-in     ExecutionReport  one      1\n"
                          "app-in     ExecutionReport  one      2\n");
}

TEST_F(Sending, FitsTheTerminal) {
    RunResult const run = onTerminal(72, {"--color", "never", "send", "C", order("one")});
    EXPECT_EQ(run.code, 0);
    std::vector<std::string> const shown = lines(run.output);
    ASSERT_EQ(shown.size(), 2U) << run.output;
    EXPECT_EQ(shown[0], "id  time                   stream   type            seq  fields");
    EXPECT_TRUE(shown[1].ends_with("…")) << shown[1];
}

TEST_F(Sending, HasColoursOnATerminalOnly) {
    EXPECT_NE(onTerminal(100, {"connections"}).output.find("\x1b[1m"), std::string::npos);
    EXPECT_EQ(zan({"connections"}).output.find("\x1b"), std::string::npos);
    EXPECT_NE(zan({"--color", "always", "connections"}).output.find("\x1b[1m"), std::string::npos);
    environment_["NO_COLOR"] = "1";
    EXPECT_EQ(onTerminal(100, {"connections"}).output.find("\x1b"), std::string::npos);
}

TEST_F(Sending, TakesLinesOfStandardInput) {
    RunResult const run =
        zan({"send", "C"}, "# two orders\n" + order("one") + "\n\n" + order("two") + "\r\n");
    EXPECT_EQ(run.code, 0) << run.errors;
    EXPECT_EQ(loggedOrders(), "one two ");
}

TEST_F(Sending, TakesLinesOfAFileInOneBatch) {
    std::string const file = write("orders.txt", order("one") + "\n" + order("two"));
    RunResult const run = zan({"send", "C", "--batch", "--file", file, "--json"});
    EXPECT_EQ(run.code, 0) << run.errors;
    EXPECT_EQ(objects(run.output).size(), 2U) << run.output;
    EXPECT_EQ(loggedOrders(), "one two ");
}

TEST_F(Sending, TellsWhichLineWasNotTaken) {
    RunResult const run = zan({"send", "C"}, order("one") + "\n35=D|bad\n" + order("two") + "\n");
    EXPECT_EQ(run.code, 8);
    EXPECT_NE(run.errors.find("zan: standard input, line 2 was not taken; the 1 before it were\n"),
              std::string::npos)
        << run.errors;
    EXPECT_EQ(loggedOrders(), "one ");
}

TEST_F(Sending, TakesNothingOfABadBatch) {
    RunResult const run = zan({"send", "C", "--batch", order("one"), "35=D|bad"});
    EXPECT_EQ(run.code, 8);
    EXPECT_NE(run.errors.find("nothing of the batch was taken"), std::string::npos);
    EXPECT_EQ(loggedOrders(), "");
}

TEST_F(Sending, SendsMessagesOfTheSession) {
    RunResult const run =
        zan({"--json", "send", "C", "--admin", "35=1|112=hello", "--wait", "20", "--answers", "1"});
    EXPECT_EQ(run.code, 0) << run.errors;
    auto const rows = objects(run.output);
    ASSERT_EQ(rows.size(), 2U) << run.output;
    EXPECT_EQ(rows[1]["type"], "0");
    EXPECT_NE(rows[1]["text"].get<std::string>().find("112=hello"), std::string::npos);
}

TEST_F(Sending, EndsInOrderWhileItWaitsForInput) {
    ProgramRun run(settings({"send", "C"}));
    run.type(order("one") + "\n");
    ASSERT_FALSE(counterparty_->waitForLine("|11=one|").empty());
    run.sendSignal(SIGINT);
    EXPECT_EQ(run.wait(), 130);
    EXPECT_EQ(run.errors(), "zan: interrupted\n");
    EXPECT_FALSE(counterparty_->waitForLine("|35=5|").empty());
}

TEST_F(Sending, IgnoresWhatNohupIgnores) {
    std::signal(SIGHUP, SIG_IGN);
    ProgramRun run(settings({"send", "C"}));
    run.type(order("one") + "\n");
    ASSERT_FALSE(counterparty_->waitForLine("|11=one|").empty());
    run.sendSignal(SIGHUP);
    run.closeInput();
    EXPECT_EQ(run.wait(), 0) << run.errors();
    std::signal(SIGHUP, SIG_DFL);
}

TEST_F(Sending, PostsWithoutTheCounterparty) {
    RunResult const run = zan({"--json", "post", "C", "35=B|148=hello|33=1|58=text"});
    EXPECT_EQ(run.code, 0) << run.errors;
    auto const rows = objects(run.output);
    ASSERT_EQ(rows.size(), 1U);
    EXPECT_EQ(rows[0]["stream"], 2);
    EXPECT_EQ(rows[0]["type"], "B");
    for (std::string const& line : counterparty_->lines()) {
        EXPECT_EQ(line.find("148=hello"), std::string::npos);
    }
}

TEST_F(Sending, SendsAgainWhatWasSent) {
    zan({"send", "C", order("one"), order("two")});
    RunResult const run =
        zan({"--json", "resend", "C", "--from", "20200101", "--where", "tag(11) = 'two'"});
    EXPECT_EQ(run.code, 0) << run.errors;
    EXPECT_EQ(run.output, "{\"name\":\"C\",\"resent\":1}\n");
    EXPECT_EQ(lines(zan({"log", "C", "--stream", "resent"}).output).size(), 2U);
}

} // namespace
