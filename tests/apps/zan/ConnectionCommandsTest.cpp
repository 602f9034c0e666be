// What a person sees of connections: names, states, logging on and off, and how failures are told.
#include "apps/zan/ZanFixture.h"
#include "support/Pattern.h"

#include <csignal>

namespace {

class ConnectionCommands : public ZanTest {};

TEST_F(ConnectionCommands, ListTheConnectionsOfTheDemo) {
    RunResult const run = zan({"--url", "embedded:demo", "connections"});
    EXPECT_EQ(run.output, "name  connected\nDEMO  no\n");
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(run.code, 0);
}

TEST_F(ConnectionCommands, ShowTheStateAfterALogonAndLogOutAgain) {
    useCounterparty();
    RunResult const run = zan({"connect"});
    EXPECT_EQ(run.code, 0) << run.errors;
    EXPECT_TRUE(Pattern("C     logged on  \\d{8}-\\d\\d:\\d\\d:\\d\\d.\\d{3} +10  "
                        "127.0.0.1:\\d+  127.0.0.1:\\d+")
                    .isIn(run.output))
        << run.output;
    EXPECT_EQ(run.errors, "zan: the engine is in this program, so C is logged out again; --stay "
                          "would keep it\n");
    EXPECT_FALSE(counterparty_->waitForLine("|35=5|").empty());
}

TEST_F(ConnectionCommands, ShowWhatTheEngineTellsOfItself) {
    useCounterparty();
    RunResult const run = zan({"--diagnostics", "info", "ping", "C"});
    EXPECT_EQ(run.code, 0);
    EXPECT_NE(run.errors.find("INFO "), std::string::npos) << run.errors;
    EXPECT_EQ(zan({"--diagnostics", "error", "ping", "C"}).errors, "");
}

TEST_F(ConnectionCommands, StayConnectedUntilCtrlC) {
    useCounterparty();
    ProgramRun run(settings({"connect", "--stay"}, 120));
    ASSERT_TRUE(run.waitFor("logged on")) << run.output();
    run.type("\x03");
    EXPECT_EQ(run.wait(), 130) << run.output();
    EXPECT_NE(run.output().find("zan: interrupted"), std::string::npos) << run.output();
    EXPECT_FALSE(counterparty_->waitForLine("< 8=FIX.4.4|9=").empty());
    EXPECT_FALSE(counterparty_->waitForLine("|35=5|").empty());
}

TEST_F(ConnectionCommands, ShowWhenTheLinkIsLost) {
    useCounterparty();
    ProgramRun run(settings({"--json", "connect", "C", "--stay"}));
    ASSERT_TRUE(run.waitFor("logged on"));
    counterparty_->end(SIGKILL);
    EXPECT_TRUE(run.waitFor("\"state\":\"disconnected")) << run.output();
    run.sendSignal(SIGTERM);
    EXPECT_EQ(run.wait(), 130);
}

TEST_F(ConnectionCommands, KeepTryingUntilTheConnectionIsLoggedOn) {
    useCounterparty();
    std::string const url = environment_["ZAN_URL"].substr(9);
    std::ifstream file(url);
    std::string const text((std::istreambuf_iterator<char>(file)), {});
    std::size_t const at = text.rfind('=') + 1;
    std::string const port = text.substr(at, text.size() - at - 1);
    counterparty_->end(SIGKILL);
    ProgramRun run(settings({"connect", "C", "--keep"}, 200));
    ASSERT_TRUE(run.waitFor("tries on")) << run.output() << run.errors();
    counterparty_.emplace(
        ZAN_COUNTERPARTY_PROGRAM,
        std::vector<std::string>{"--sender", "THEM", "--target", "US", "--port", port});
    ASSERT_TRUE(run.waitFor("logged on")) << run.output() << run.errors();
    run.sendSignal(SIGINT);
    EXPECT_EQ(run.wait(), 130);
    EXPECT_FALSE(counterparty_->waitForLine("|35=5|").empty());
}

TEST_F(ConnectionCommands, EndAWaitForTheConnectionInOrder) {
    useCounterparty();
    counterparty_->end(SIGKILL);
    ProgramRun run(settings({"connect", "C", "--keep"}, 200));
    ASSERT_TRUE(run.waitFor("tries on")) << run.errors();
    run.sendSignal(SIGINT);
    EXPECT_EQ(run.wait(), 130);
}

TEST_F(ConnectionCommands, SetSequenceNumbers) {
    useCounterparty();
    ASSERT_EQ(zan({"connect", "C"}).code, 0);
    std::filesystem::remove_all(folder_ + "/sessions.cfg.data");
    RunResult const refused = zan({"--json", "doctor", "--logon"});
    EXPECT_NE(refused.output.find("MsgSeqNum too low, expecting 3 but received 1"),
              std::string::npos)
        << refused.output;
    EXPECT_NE(refused.output.find("our numbers are behind of what the counterparty has: zan "
                                  "connect 'C' --next-out 3; or agree on a reset, then zan "
                                  "connect 'C' --reset"),
              std::string::npos)
        << refused.output;
    RunResult const run = zan({"connect", "C", "--next-out", "3", "--next-in", "4"});
    EXPECT_EQ(run.code, 0) << run.errors;
    EXPECT_NE(zan({"--json", "log", "C", "--columns", "note"})
                  .output.find("the next sequence number out set to 3 by "),
              std::string::npos);
    EXPECT_EQ(zan({"connect", "C", "--reset"}).code, 0);
    EXPECT_NE(counterparty_->waitForLine("|141=Y|").find("|34=1|"), std::string::npos);
    EXPECT_EQ(zan({"connect", "C", "--next-out", "0"}).code, 2);
    EXPECT_EQ(zan({"connect", "C", "--next-out", "2000000001"}).code, 8);
}

TEST_F(ConnectionCommands, PingACounterparty) {
    useCounterparty();
    RunResult const run = zan({"--json", "ping", "C"});
    EXPECT_EQ(run.code, 0) << run.errors;
    auto const answers = objects(run.output);
    ASSERT_EQ(answers.size(), 1U);
    EXPECT_EQ(answers[0]["answered"], true);
    EXPECT_GE(answers[0]["millis"], 0);
}

TEST_F(ConnectionCommands, ShowSettings) {
    useCounterparty();
    RunResult const run = zan({"properties", "C"});
    EXPECT_TRUE(Pattern("C +TargetCompID +THEM").isIn(run.output)) << run.output;
}

TEST_F(ConnectionCommands, AskBeforeAReset) {
    useCounterparty();
    RunResult run = zan({"reset", "C"});
    EXPECT_EQ(run.code, 2);
    EXPECT_EQ(run.errors, "zan: nobody can answer: Reset both sequence numbers of C to 1? --yes "
                          "would be right\n");
    run = onTerminal(120, {"reset", "C"}, "n\n");
    EXPECT_EQ(run.code, 2);
    EXPECT_NE(run.output.find("zan: nothing was done"), std::string::npos);
    run = onTerminal(120, {"reset", "C"}, "y\n");
    EXPECT_EQ(run.code, 0) << run.output;
}

TEST_F(ConnectionCommands, ThatOnlyReadMakeNoDataFolder) {
    useCounterparty();
    std::string const data = folder_ + "/sessions.cfg.data";
    std::vector<std::vector<std::string>> const reading = {
        {"connections"}, {"state"},  {"properties"},
        {"log"},         {"audit"},  {"chain", "C", "one"},
        {"marks"},       {"doctor"}, {"tail", "--no-follow"},
        {"decode"},      {"modules"}};
    for (std::vector<std::string> const& command : reading) {
        zan(command, "35=0|");
        EXPECT_FALSE(std::filesystem::exists(data)) << command.front();
    }
    EXPECT_EQ(zan({"log"}).code, 0);
    EXPECT_EQ(zan({"ping"}).code, 0);
    EXPECT_TRUE(std::filesystem::exists(data));
}

struct Failure {
    char const* name;
    std::vector<std::string> arguments;
    int code;
    char const* text;
};

class Failures : public ZanTest, public testing::WithParamInterface<Failure> {};

TEST_P(Failures, AreToldInOneLineAndByTheirCode) {
    write("nowhere.cfg", "[SESSION]\nConnectionName=C\nConnectionType=initiator\n"
                         "BeginString=FIX.4.4\nSenderCompID=US\nTargetCompID=THEM\n"
                         "StartTime=00:00:00\nEndTime=00:00:00\nHeartBtInt=10\n"
                         "LogonTimeout=2\nSocketConnectHost=127.0.0.1\nSocketConnectPort=1\n");
    environment_["ZAN_URL"] = "embedded:" + folder_ + "/nowhere.cfg";
    RunResult const run = zan(GetParam().arguments);
    EXPECT_EQ(run.code, GetParam().code) << run.errors;
    EXPECT_EQ(run.output, "");
    EXPECT_TRUE(Pattern(GetParam().text).isIn(run.errors)) << run.errors;
    EXPECT_EQ(lines(run.errors).size(), 1U) << run.errors;
}

INSTANTIATE_TEST_SUITE_P(
    OfTheProgram, Failures,
    testing::Values(
        Failure{"Usage", {"state", "--colour"}, 2, "--colour.*zan --help explains"},
        Failure{"NoCommand", {}, 2, "subcommand"},
        Failure{"BadChoice", {"--color", "red", "state"}, 2, "--color"},
        Failure{
            "BadStream", {"log", "C", "--stream", "9"}, 2, "there is no stream \"9\"; admin-in"},
        Failure{"BadColumn", {"log", "C", "--columns", "id,nosuch"}, 2, "no column \"nosuch\""},
        Failure{"BadTime", {"log", "C", "--from", "yesterday"}, 2, "\"yesterday\" is no time"},
        Failure{"BadIds", {"log", "C", "--ids", "x"}, 2, "\"x\" is no range of ids"},
        Failure{
            "RawOfNoMessages", {"--raw", "connections"}, 2, "--json, or neither, would be right"},
        Failure{"NoModule", {"--url", "nosuch:x", "state"}, 3, "Cannot find method .*; .*nosuch"},
        Failure{"NoUrl", {"--url", "::", "state"}, 3, "the URL of --url is none"},
        Failure{"NoSessionFile",
                {"--url", "embedded:none.cfg", "state"},
                3,
                "none.cfg: cannot be read"},
        Failure{"Refused", {"connect", "C"}, 4, "refused"},
        Failure{"NotConnected", {"send", "C", "--admin", "35=1|112=x"}, 4, "refused"},
        Failure{"UnknownConnection", {"state", "X"}, 6, "X"},
        Failure{"BadExpression",
                {"log", "C", "--from", "09:30", "--where", "seq = 1 AND nosuch = 1"},
                8,
                "position 13 of \"seq = 1 AND nosuch = 1\""},
        Failure{
            "BadFilter", {"tail", "C", "--where", "nosuch = 1"}, 8, "position 1 of \"nosuch = 1\""},
        Failure{"NoMessage", {"decode", "/dev/null"}, 8, "there is no FIX message in the input"},
        Failure{"NoFile", {"decode", "/none"}, 9, "/none cannot be read: No such file"}),
    [](auto const& each) { return each.param.name; });

TEST_F(ConnectionCommands, TellWhoHasTheDataFolder) {
    useCounterparty();
    ProgramRun holder(settings({"connect", "--stay"}));
    ASSERT_TRUE(holder.waitFor("logged on"));
    RunResult const run = zan({"state"});
    EXPECT_EQ(run.code, 3);
    EXPECT_NE(run.errors.find("process"), std::string::npos) << run.errors;
}

TEST_F(ConnectionCommands, NeedAName) {
    write("two.cfg", "[DEFAULT]\nConnectionType=initiator\nBeginString=FIX.4.4\nSenderCompID=US\n"
                     "StartTime=00:00:00\nEndTime=00:00:00\nHeartBtInt=10\n"
                     "SocketConnectHost=127.0.0.1\nSocketConnectPort=1\n"
                     "[SESSION]\nTargetCompID=A\n[SESSION]\nTargetCompID=B\n");
    environment_["ZAN_URL"] = "embedded:" + folder_ + "/two.cfg";
    RunResult const run = zan({"connect"});
    EXPECT_EQ(run.code, 2);
    EXPECT_EQ(run.errors, "zan: which connection? One of US->A, US->B would be right\n");
    EXPECT_EQ(lines(zan({"state"}).output).size(), 3U);
}

TEST_F(ConnectionCommands, ReadTheConfigFile) {
    write(".config/zan/config", "url = embedded:demo\n");
    environment_.erase("XDG_CONFIG_HOME");
    EXPECT_EQ(zan({"connections"}).output, "name  connected\nDEMO  no\n");
}

} // namespace
