// What the embedded engine tells the application's diagnostic sink.
#include "EmbeddedFixture.h"

#include "errors/ZANCannotConnectException.h"
#include "infra/Diagnostics.h"

#include <algorithm>
#include <atomic>
#include <mutex>
#include <stdexcept>

namespace {

class DiagnosticsTest : public EmbeddedTest {
protected:
    void SetUp() override {
        EmbeddedTest::SetUp();
        setDiagnosticSink(
            [this](DiagnosticLevel level, std::string const& category, std::string const& text) {
                std::lock_guard const lock(mutex_);
                told_.push_back(std::string(levelName(level)) + " " + category + ": " + text);
            });
    }

    void TearDown() override {
        EmbeddedTest::TearDown();
        setDiagnosticSink(nullptr);
    }

    /// The first line that holds the text, as soon as it was told.
    std::string told(std::string const& text) {
        std::string found;
        eventually([&] {
            std::lock_guard const lock(mutex_);
            auto const line = std::ranges::find_if(told_, [&](std::string const& each) {
                return each.find(text) != std::string::npos;
            });
            found = line == told_.end() ? "" : *line;
            return !found.empty();
        });
        return found;
    }

    std::string all() {
        std::lock_guard const lock(mutex_);
        std::string text;
        for (std::string const& line : told_) {
            text += line + "\n";
        }
        return text;
    }

    std::mutex mutex_;
    std::vector<std::string> told_;
};

TEST_F(DiagnosticsTest, TellTheCourseOfAConnection) {
    startAndConnect();
    engine().disconnect(me, "C", "good night");
    ZANEngineProxy::uninitialize();
    std::string const here = "127.0.0.1:" + std::to_string(port_);
    std::string rest = all();
    for (std::string const& line :
         {std::string("INFO module: loaded "),
          "INFO engine: runs; connections: 1, data folder: " + folder_ + "/sessions.cfg.data\n",
          "INFO session: connection C: connects to " + here + "\n",
          std::string("INFO session: connection C: the link is up, from 127.0.0.1:"),
          " to " + here + "\n",
          std::string("INFO session: connection C: is logged on; the next numbers are 2 out and 2 "
                      "in\n"),
          std::string("INFO session: connection C: disconnects: good night\n"),
          std::string("INFO session: connection C: logs out: good night\n"),
          std::string("INFO session: connection C: the counterparty logs out\n"),
          std::string("INFO session: connection C: is logged off\n"),
          std::string("INFO session: connection C: the link is closed\n"),
          std::string("INFO engine: has stopped; data folder: ")}) {
        std::size_t const at = rest.find(line);
        ASSERT_NE(at, std::string::npos) << line << "is not in, or not in its place:\n" << all();
        rest.erase(0, at + line.size());
    }
    EXPECT_EQ(all().find("WARNING"), std::string::npos) << all();
}

TEST_F(DiagnosticsTest, TellWhyAConnectFailed) {
    startAcceptor();
    acceptor_.reset();
    startEngine();
    EXPECT_THROW(engine().connect(me, "C"), ZANCannotConnectException);
    EXPECT_EQ(told("is not connected").find("WARNING session: connection C: is not connected: "),
              0u);
    EXPECT_NE(told("is not connected").find("refused"), std::string::npos) << all();
}

TEST_F(DiagnosticsTest, TellThatALinkIsLost) {
    startAndConnect();
    acceptor_->end(SIGKILL);
    EXPECT_EQ(told("link is lost").find("WARNING session: connection C: the link is lost: "), 0u)
        << all();
}

TEST_F(DiagnosticsTest, TellARejectAndMaskItsSecrets) {
    startAndConnect({"--send", "35=3|45=1|371=554|58=wrong 554=secret"});
    EXPECT_EQ(told("rejects our"), "WARNING session: connection C: the counterparty rejects our "
                                   "message 1, tag 554: wrong 554=***");
}

TEST_F(DiagnosticsTest, TellAResendRequest) {
    startAndConnect({"--send", "35=2|7=1|16=0"});
    EXPECT_EQ(told("again"), "WARNING session: connection C: the counterparty asks for our "
                             "messages 1 and all after it again");
}

TEST_F(DiagnosticsTest, TellWhatAListenerThrew) {
    startAcceptor();
    startEngine();
    record([] { throw std::runtime_error("not today"); });
    engine().connect(me, "C");
    std::string const line = told("a listener failed on");
    EXPECT_EQ(line.find("WARNING delivery: connection C: a listener failed on "), 0u) << all();
    EXPECT_NE(line.find(": not today"), std::string::npos) << line;
}

TEST_F(DiagnosticsTest, TellWhereTheMetricsAre) {
    startAcceptor();
    ZANEngineProxy::initialize(Url("embedded:" + writeSessionFile(sessionText()) + "?metrics=0"));
    EXPECT_EQ(told("/metrics").find("INFO metrics: http://127.0.0.1:"), 0u) << all();
}

TEST_F(DiagnosticsTest, MayUseTheEngine) {
    std::atomic<int> connected{0};
    setDiagnosticSink([&](DiagnosticLevel, std::string const&, std::string const& text) {
        if (text.find("is logged on") != std::string::npos) {
            connected += engine().sendMessage(me, "C", order("from the sink")) > 0 ? 1 : 0;
        }
    });
    startAndConnect();
    EXPECT_TRUE(eventually([&] { return connected == 1; }));
}

TEST_F(DiagnosticsTest, DoNoHarmWhenTheSinkThrows) {
    setDiagnosticSink([](DiagnosticLevel, std::string const&, std::string const&) {
        throw std::runtime_error("the application's log is full");
    });
    startAndConnect();
    EventRecorder& recorder = record();
    engine().sendMessage(me, "C", order("1"));
    EXPECT_TRUE(recorder.waitFor(isReport));
}

} // namespace
