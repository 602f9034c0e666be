#include "server/sessions/SessionPair.h"
#include "support/ChildProcess.h"

#include <gtest/gtest.h>

#include <array>
#include <memory>

#ifdef ZAN_COUNTERPARTY_PROGRAM

namespace {

using namespace zan::server;
using namespace std::chrono_literals;

int portIn(std::string const& line) {
    return std::stoi(line.substr(line.rfind(':') + 1));
}

TEST(CounterpartyProgram, PrintsItsPortAndFillsOrders) {
    ChildProcess program(ZAN_COUNTERPARTY_PROGRAM,
                         {"--sender", "DESK", "--target", "ME", "--begin-string", "FIX.4.2"});
    std::string const listening = program.waitForLine("listening on 127.0.0.1:");
    ASSERT_FALSE(listening.empty());
    SessionRecorder events;
    auto const client = FixSession::initiator(
        settingsFor("ME", "DESK", portIn(listening), {{"BeginString", "FIX.4.2"}}), events);
    client->start({});
    ASSERT_TRUE(events.waitFor("on"));
    sendOne(*client, "D", {{11, "A"}, {55, "IBM"}, {54, "1"}, {38, "2"}, {40, "1"}}, 1s);
    EXPECT_TRUE(events.waitFor("|39=2|"));
    EXPECT_FALSE(program.waitForLine("|35=D|").empty());
}

TEST(CounterpartyProgram, LogsItsClientOutWhenItIsTerminated) {
    ChildProcess program(ZAN_COUNTERPARTY_PROGRAM, {});
    int const port = portIn(program.waitForLine("listening on 127.0.0.1:"));
    SessionRecorder events;
    auto const client = FixSession::initiator(settingsFor("CLIENT", "COUNTERPARTY", port), events);
    client->start({});
    ASSERT_TRUE(events.waitFor("on"));
    program.end(SIGTERM);
    EXPECT_TRUE(events.waitFor("|58=the counterparty ends|"));
}

// What the program prints on both streams, and how it ends.
std::pair<std::string, int> run(std::string const& arguments) {
    std::string const command =
        std::string("'") + ZAN_COUNTERPARTY_PROGRAM + "' " + arguments + " 2>&1";
    FILE* const pipe = popen(command.c_str(), "r");
    std::string output;
    std::array<char, 256> buffer{};
    while (std::fgets(buffer.data(), buffer.size(), pipe) != nullptr)
        output += buffer.data();
    return {output, WEXITSTATUS(pclose(pipe))};
}

class WrongOptions : public testing::TestWithParam<std::pair<char const*, char const*>> {};

TEST_P(WrongOptions, AreToldAndEndTheProgram) {
    auto const [arguments, text] = GetParam();
    auto const [output, code] = run(arguments);
    EXPECT_EQ(code, 1);
    EXPECT_NE(output.find(text), std::string::npos) << output;
}

INSTANTIATE_TEST_SUITE_P(Lines, WrongOptions,
                         testing::Values(std::pair{"--colour red", "unknown option --colour"},
                                         std::pair{"--port", "--port needs a value"},
                                         std::pair{"--port x", "a number from 0 to 65535"},
                                         std::pair{"--port 65536", "a number from 0 to 65535"},
                                         std::pair{"--begin-string FIX.9",
                                                   "FIX.4.2 or FIX.4.4 is expected"}));

TEST(CounterpartyProgram, ExplainsItsOptions) {
    auto const [output, code] = run("--help");
    EXPECT_EQ(code, 0);
    for (char const* option : {"--port", "--sender", "--target", "--begin-string", "--store"})
        EXPECT_NE(output.find(option), std::string::npos) << option;
}

} // namespace

#endif
