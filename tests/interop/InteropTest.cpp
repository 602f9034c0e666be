// Our side and another FIX implementation, in both roles: jspurefix in a process of its own.
#include "conformance/EventRecorder.h"
#include "engine/ZANEngineProxy.h"
#include "events/ZANEngineDefs.h"
#include "infra/Url.h"
#include "support/ChildProcess.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <functional>
#include <optional>
#include <regex>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>

namespace {

using zan::conformance::EventRecorder;
using zan::conformance::SeenEvent;

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

UserTicket const me{"tester", ""};
std::string const groups = "453=2|448=BROKER|447=D|452=1|802=2|523=DESK|803=4|523=FLOOR|803=5|"
                           "448=CLIENT|447=D|452=3|";

std::string order(std::string const& id) {
    return "35=D|11=" + id + "|" + groups + "55=IBM|54=1|60=20261121-09:30:00|38=100|40=2|44=10.5";
}

// The port is free at this moment; the other program cannot tell which one it took.
int freePort() {
    int const probe = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    bind(probe, reinterpret_cast<sockaddr*>(&address), sizeof address);
    socklen_t size = sizeof address;
    getsockname(probe, reinterpret_cast<sockaddr*>(&address), &size);
    close(probe);
    return ntohs(address.sin_port);
}

bool eventually(std::function<bool()> const& test) {
    auto const deadline = Clock::now() + 20s;
    while (!test()) {
        if (Clock::now() > deadline) {
            return false;
        }
        std::this_thread::sleep_for(20ms);
    }
    return true;
}

class InteropTest : public testing::Test {
protected:
    void SetUp() override {
        std::string pattern = (std::filesystem::temp_directory_path() / "zan-interop-XXXXXX");
        folder_ = mkdtemp(pattern.data());
        std::filesystem::create_directory(folder_ + "/theirs");
    }
    void TearDown() override {
        // Whatever the other side said helps to see what went wrong.
        for (std::string const& line :
             HasFailure() && other_ ? other_->lines() : std::vector<std::string>{}) {
            std::cerr << "jspurefix: " << line << '\n';
        }
        other_.reset();
        std::filesystem::remove_all(folder_);
    }

    void startOther(std::string const& role, int port) {
        other_.emplace("/usr/bin/env",
                       std::vector<std::string>{"node", std::string(SCRIPTS) + "/" + role + ".js",
                                                std::to_string(port), folder_ + "/theirs"});
    }

    /// The first of its lines that matches.
    std::string saw(std::string const& pattern) {
        std::regex const wanted(pattern);
        std::string found;
        eventually([&] {
            for (std::string const& line : other_->lines()) {
                if (std::regex_search(line, wanted)) {
                    found = line;
                    return true;
                }
            }
            return false;
        });
        return found;
    }

    std::string folder_;
    std::optional<ChildProcess> other_;
};

bool holdsGroups(std::string const& line) {
    return line.find("|" + groups) != std::string::npos;
}

class AcceptorTest : public InteropTest {
protected:
    void SetUp() override {
        InteropTest::SetUp();
        startOther("acceptor", port_);
        std::string const file = folder_ + "/sessions.cfg";
        std::ofstream(file) << "[SESSION]\nConnectionName=C\nConnectionType=initiator\n"
                               "BeginString=FIX.4.4\nSenderCompID=US\nTargetCompID=THEM\n"
                               "StartTime=00:00:00\nEndTime=00:00:00\nHeartBtInt=10\n"
                               "ReconnectInterval=1\nLogonTimeout=3\n"
                               "SocketConnectHost=127.0.0.1\nSocketConnectPort="
                            << port_ << "\n";
        ZANEngineProxy::initialize(Url("embedded:" + file));
        recorder_ = counted_ptr<IZANEventListener>(new EventRecorder);
        engine().subscribeDirect(me, "C", true, true, true, recorder_);
        ASSERT_TRUE(eventually([] { return connects(); })) << "jspurefix does not listen";
    }
    void TearDown() override {
        if (ZANEngineProxy::isInitialized()) {
            ZANEngineProxy::uninitialize();
        }
        InteropTest::TearDown();
    }

    static ZANEngineProxy& engine() { return ZANEngineProxy::getInstance(); }
    EventRecorder& recorder() { return static_cast<EventRecorder&>(*recorder_); }

    static bool connects() {
        try {
            engine().connect(me, "C");
            return true;
        } catch (std::exception const&) {
            return false;
        }
    }

    /// The report of the order with this id; an empty one when none came.
    SeenEvent reportOf(std::string const& id) {
        auto const isReport = [&](SeenEvent const& event) {
            return event.isType("8") && event.field(11) == id;
        };
        recorder().waitFor(isReport);
        return recorder().first(isReport);
    }

    int const port_ = freePort();
    counted_ptr<IZANEventListener> recorder_;
};

std::string const groupsOfModel =
    "453(447=D|448=BROKER|452=1|802(523=DESK|803=4|)802(523=FLOOR|803=5|))"
    "453(447=D|448=CLIENT|452=3|)";

TEST_F(AcceptorTest, TakesALogonAndAnOrderWithGroupsAndReports) {
    engine().sendMessage(me, "C", order("one"));
    EXPECT_TRUE(holdsGroups(saw("in .*35=D.*11=one")));
    SeenEvent const report = reportOf("one");
    EXPECT_EQ(report.field(39), "2");
    EXPECT_EQ(report.groups, groupsOfModel);
}

TEST_F(AcceptorTest, IsSentAgainWhatWasLostWithItsProcess) {
    engine().sendMessage(me, "C", order("one"));
    ASSERT_EQ(reportOf("one").field(39), "2");
    // It writes its numbers a moment after it has used them.
    std::this_thread::sleep_for(500ms);
    other_->sendSignal(SIGSTOP);
    engine().sendMessage(me, "C", order("two"));
    engine().sendMessage(me, "C", order("three"));
    other_->end(SIGKILL);
    startOther("acceptor", port_);
    EXPECT_EQ(reportOf("two").field(39), "2");
    EXPECT_EQ(reportOf("three").field(39), "2");
    EXPECT_TRUE(holdsGroups(saw("in .*35=D.*43=Y.*11=two")));
    EXPECT_TRUE(holdsGroups(saw("in .*35=D.*43=Y.*11=three")));
}

TEST_F(AcceptorTest, SendsAgainWhatWasLostWithTheLink) {
    engine().sendMessage(me, "C", order("lost-1"));
    SeenEvent const report = reportOf("lost-1");
    EXPECT_EQ(report.field(43), "Y");
    EXPECT_EQ(report.groups, groupsOfModel);
    engine().sendMessage(me, "C", order("two"));
    EXPECT_EQ(reportOf("two").field(39), "2");
}

TEST_F(AcceptorTest, GoesOnWithTheNumbersAfterACut) {
    engine().sendMessage(me, "C", order("cut-1"));
    ASSERT_TRUE(recorder().waitFor(
        [](SeenEvent const& event) { return (event.flags & FLAG_DISCONNECTED) != 0; }));
    ASSERT_TRUE(eventually([] { return engine().isConnected(me, "C"); }));
    engine().sendMessage(me, "C", order("two"));
    EXPECT_EQ(reportOf("two").field(39), "2");
    EXPECT_NE(saw("in .*35=A.*34=3.*"), "");
}

TEST_F(AcceptorTest, AnswersALogout) {
    engine().disconnect(me, "C", "the day is over");
    EXPECT_NE(saw("in .*35=5.*58=the day is over"), "");
    EXPECT_NE(saw("out .*35=5"), "");
    EXPECT_TRUE(recorder().waitFor(
        [](SeenEvent const& event) { return event.isType("5") && event.field(49) == "THEM"; }));
}

TEST_F(AcceptorTest, LogsOut) {
    engine().sendMessage(me, "C", order("bye-1"));
    EXPECT_EQ(reportOf("bye-1").field(39), "2");
    EXPECT_TRUE(recorder().waitFor(
        [](SeenEvent const& event) { return (event.flags & FLAG_LOGGED_OUT) != 0; }));
    EXPECT_NE(saw("in .*35=5"), "");
}

TEST_F(InteropTest, InitiatorTradesLosesTheLinkAndGetsItsReports) {
    ChildProcess counterparty(COUNTERPARTY, {"--port", "0", "--sender", "THEM", "--target", "US"});
    std::string const listening = counterparty.waitForLine("listening on");
    ASSERT_NE(listening, "");
    startOther("initiator", std::stoi(listening.substr(listening.rfind(':') + 1)));
    ASSERT_NE(saw("^ended"), "");
    EXPECT_TRUE(holdsGroups(saw("in .*35=8.*11=first.*39=2")));
    EXPECT_TRUE(holdsGroups(saw("in .*35=8.*43=Y.*11=second.*39=2")));
    EXPECT_TRUE(holdsGroups(saw("in .*35=8.*11=third.*39=2")));
    EXPECT_NE(saw("out .*35=2"), "");
    EXPECT_NE(saw("out .*35=5"), "");
    EXPECT_NE(saw("in .*35=5"), "");
}

} // namespace
