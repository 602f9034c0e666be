#include "server/sessions/SessionPair.h"
#include "support/ChildProcess.h"

#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>

namespace {

using namespace zan::server;
using namespace std::chrono_literals;

// A counterparty that shares no code with the session under test.
struct Stranger {
    explicit Stranger(std::vector<std::string> const& arguments)
        : program(TEST_ACCEPTOR, arguments) {
        std::string const line = program.waitForLine("listening on 127.0.0.1:");
        port = line.empty() ? 0 : std::stoi(line.substr(line.rfind(':') + 1));
    }
    ChildProcess program;
    int port = 0;
};

TEST(FixSessionInterop, ExchangesOrdersWithNestedGroups) {
    Stranger stranger({});
    SessionRecorder ours;
    auto const us = FixSession::initiator(settingsFor("US", "THEM", stranger.port), ours);
    us->start({});
    ASSERT_TRUE(ours.waitFor("on"));
    sendOne(*us, "D",
            {{11, "1"},
             {453, "2"},
             {448, "A"},
             {447, "D"},
             {802, "1"},
             {523, "x"},
             {803, "1"},
             {448, "B"},
             {447, "D"},
             {55, "IBM"},
             {38, "10"}},
            1s);
    ASSERT_TRUE(ours.waitFor("|35=8|"));
    EXPECT_NE(ours.linesWith("|35=8|").front().find(
                  "|453=2|448=A|447=D|802=1|523=x|803=1|448=B|447=D|55=IBM|"),
              std::string::npos);
}

TEST(FixSessionInterop, TakesMessagesThatFollowTheLogonAtOnce) {
    Stranger stranger({"--send", "35=B|148=News|33=2|58=one|58=two"});
    SessionRecorder ours;
    auto const us = FixSession::initiator(settingsFor("US", "THEM", stranger.port), ours);
    us->start({});
    EXPECT_TRUE(ours.waitFor("|148=News|33=2|58=one|58=two|10="));
}

TEST(FixSessionInterop, GetsTheReasonOfARefusedLogon) {
    Stranger stranger({"--refuse-logon", "not on Sundays"});
    SessionRecorder ours;
    auto const us = FixSession::initiator(settingsFor("US", "THEM", stranger.port), ours);
    us->start({});
    ASSERT_TRUE(ours.waitFor("down"));
    EXPECT_FALSE(ours.linesWith("not on Sundays").empty());
}

TEST(FixSessionInterop, GoesOnWithItsNumbersWhenTheCounterpartyWasKilled) {
    std::filesystem::path const folder =
        std::filesystem::temp_directory_path() / ("zan_interop_" + std::to_string(getpid()));
    std::filesystem::create_directories(folder);
    SessionRecorder ours;
    std::unique_ptr<FixSession> us;
    int port = 0;
    {
        Stranger stranger({"--store", folder.string()});
        port = stranger.port;
        us = FixSession::initiator(settingsFor("US", "THEM", port), ours);
        us->start({});
        ASSERT_TRUE(ours.waitFor("on"));
        sendOne(*us, "D", {{11, "1"}, {55, "IBM"}, {38, "10"}}, 1s);
        ASSERT_TRUE(ours.waitFor("|35=8|"));
        stranger.program.end(SIGKILL);
    }
    ASSERT_TRUE(ours.waitFor("down"));
    Stranger again({"--store", folder.string(), "--port", std::to_string(port)});
    ASSERT_TRUE(ours.waitFor("on", 2)) << ours.all();
    sendOne(*us, "D", {{11, "2"}, {55, "IBM"}, {38, "10"}}, 1s);
    EXPECT_TRUE(ours.waitFor("|35=8|", 2)) << ours.all();
    EXPECT_TRUE(ours.linesWith("|141=Y|").empty());
    std::filesystem::remove_all(folder);
}

TEST(FixSessionInterop, MakesTheCounterpartyBeginWithOneToo) {
    Stranger stranger({});
    SessionRecorder ours;
    auto const us = FixSession::initiator(settingsFor("US", "THEM", stranger.port), ours);
    us->start({});
    ASSERT_TRUE(ours.waitFor("on"));
    sendOne(*us, "D", {{11, "1"}, {55, "IBM"}, {38, "10"}});
    ASSERT_TRUE(ours.waitFor("|35=8|"));
    us->stop();
    us->resetNumbers("a new day");
    us->start({});
    ASSERT_TRUE(ours.waitFor("on", 2)) << ours.all();
    EXPECT_EQ(us->nextSenderNumber(), 2);
    EXPECT_EQ(us->nextTargetNumber(), 2);
    EXPECT_EQ(ours.linesWith("|35=A|").back().find("< 8=FIX.4.4"), 0u);
    EXPECT_NE(ours.linesWith("|35=A|").back().find("|34=1|"), std::string::npos);
    sendOne(*us, "D", {{11, "2"}, {55, "IBM"}, {38, "10"}});
    EXPECT_TRUE(ours.waitFor("|35=8|", 2)) << ours.all();
    us->stop();
    us->start({});
    ASSERT_TRUE(ours.waitFor("on", 3)) << ours.all();
    EXPECT_EQ(ours.linesWith("|141=Y|").size(), 2u) << ours.all();
    EXPECT_TRUE(ours.linesWith("! ").empty()) << ours.all();
}

} // namespace
