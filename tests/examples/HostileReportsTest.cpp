// What a counterparty may answer to the example programs: reports without the fields that are
// usual, text where numbers are expected, messages that nobody asked for, and no answer. A program
// may say that it did not get what it wanted; it must end by itself, and must not die.
#include "ExamplePrograms.h"
#include "conformance/ScriptedCounterparty.h"

#include <gtest/gtest.h>

#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include <sys/wait.h>

namespace {

using zan::conformance::ScriptedCounterparty;

struct Program {
    char const* path;
    char const* connection;
    char const* arguments;
};

Program const programs[] = {EXAMPLE_PROGRAMS};

class TemporaryFolder {
public:
    TemporaryFolder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "zan-XXXXXX").string();
        path_ = mkdtemp(pattern.data());
    }
    TemporaryFolder(TemporaryFolder const&) = delete;
    TemporaryFolder& operator=(TemporaryFolder const&) = delete;
    ~TemporaryFolder() { std::filesystem::remove_all(path_); }

    std::filesystem::path const& path() const { return path_; }

private:
    std::filesystem::path path_;
};

std::string nameOf(Program const& program) {
    std::string name = std::filesystem::path(program.path).stem().string();
    for (char& each : name) {
        each = std::isalnum(static_cast<unsigned char>(each)) ? each : '_';
    }
    return name;
}

// What each conversation has, whatever else is said in it.
std::string const session = "on A send A {=141}98=0|108={108}\n"
                            "on 1 send 0 112={112}\n"
                            "on 2 send 4 34={7}|43=Y|122={now}|123=Y|36={next}\n"
                            "on 5 send 5\n";

std::string const reportsOfAllKinds =
    "on D send 8\n"
    "on D send 8 37=O1\n"
    "on D send 8 11={11}\n"
    "on D send 8 11={11}|39=22|150=partly\n"
    "on D send 8 11={11}|39=1|150=F|14=some|151=few|6=1e400|38=-|44=0x10|31=.|32=1.1.1\n"
    "on D send 8 11={11}|39=1|14=99999999999999999999999999|151=-99999999999999999999999\n"
    "on D send 8 11={11}|39=1|60=yesterday|97=perhaps|453=0\n"
    "on D send 8 11=|39=1\n"
    "on D send 8 11={11}|39=1|453=x|382=-1\n"
    "on D send 9 11={11}|39=8|102=none\n"
    "on D send j 45=2|372=D|380=0\n"
    "on D send 3 45=2|58=no\n"
    "on D send B 148=News|33=1|58=unasked\n"
    "on D send UZZ 5000=anything\n";

std::string const fill = "on D send 8 11={11}|37=O{count}|17=E{count}|55={55}|54={54}|39=2|150=F|"
                         "14=100|151=0|6=1\n"
                         "on F send 8 11={11}|41={41}|37=O{count}|39=4|150=4|14=0|151=0\n";

struct Result {
    int status;
    std::string output;
};

class ExampleProgram : public testing::TestWithParam<Program> {
protected:
    // Runs the program in a folder of its own, against a counterparty with this script.
    Result run(std::string const& script) {
        ScriptedCounterparty const counterparty({"FIX.4.4", "COUNTERPARTY", "CLIENT"}, script);
        TemporaryFolder const folder;
        std::ofstream(folder.path() / "sessions.cfg")
            << "[SESSION]\nConnectionName=" << GetParam().connection
            << "\nConnectionType=initiator\nBeginString=FIX.4.4\nSenderCompID=CLIENT\n"
               "TargetCompID=COUNTERPARTY\nStartTime=00:00:00\nEndTime=00:00:00\nHeartBtInt=30\n"
               "ReconnectInterval=1\nLogoutTimeout=1\nSocketConnectHost=127.0.0.1\n"
               "SocketConnectPort="
            << counterparty.port() << "\n";
        std::string const command = "cd '" + folder.path().string() +
                                    "' && exec timeout -k 5 90 '" + GetParam().path + "' " +
                                    GetParam().arguments + " >output 2>&1";
        int const status = std::system(command.c_str()); // NOLINT: a command of the test's own
        std::ostringstream output;
        output << std::ifstream(folder.path() / "output").rdbuf();
        return {status, output.str()};
    }

    // Ends by itself, with a result of its own: neither by a signal nor by the time limit.
    void expectEnd(std::string const& script, bool isTraded = false) {
        Result const result = run(script);
        ASSERT_TRUE(WIFEXITED(result.status)) << result.status << "\n" << result.output;
        EXPECT_LE(WEXITSTATUS(result.status), 1) << result.output;
        // The demo checks the conversation, and says that this is another one.
        if (isTraded && nameOf(GetParam()) != "zan_demo") {
            EXPECT_EQ(WEXITSTATUS(result.status), 0) << result.output;
            EXPECT_EQ(result.output.find("ten seconds"), std::string::npos) << result.output;
        }
    }
};

TEST_P(ExampleProgram, ReadsReportsOfAllKinds) {
    expectEnd(session + reportsOfAllKinds + fill, true);
}

TEST_P(ExampleProgram, TakesAFillThatComesTwice) {
    expectEnd(session + fill + fill, true);
}

TEST_P(ExampleProgram, SeesThatAnOrderIsRejected) {
    expectEnd(session + "on D send 8 11={11}|37=O1|39=8|150=8|151=0|14=0|58=no\n"
                        "on F send 9 11={11}|41={41}|39=8|58=no\n",
              true);
}

TEST_P(ExampleProgram, TakesReportsThatNobodyAskedFor) {
    std::string const unasked = "on A send 8 11=order-1|37=O1|39=2|150=F|14=100|151=0\n"
                                "on A send 8\n";
    expectEnd(session + unasked + fill, true);
}

TEST_P(ExampleProgram, DoesNotWaitForeverForAnAnswer) {
    expectEnd(session);
}

TEST_P(ExampleProgram, EndsWhenTheLinkIsClosed) {
    expectEnd(session + "on D close\n");
}

INSTANTIATE_TEST_SUITE_P(Every, ExampleProgram, testing::ValuesIn(programs),
                         [](auto const& each) { return nameOf(each.param); });

} // namespace
