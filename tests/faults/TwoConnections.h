/// An engine with two connections, `C` and `D`, each to a counterparty of its own.
#ifndef ZANENGINE_TESTS_FAULTS_TWOCONNECTIONS_H
#define ZANENGINE_TESTS_FAULTS_TWOCONNECTIONS_H

#include "faults/FaultFixture.h"

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

class TwoConnectionsTest : public FaultTest {
protected:
    void TearDown() override {
        ZANEngineProxy::uninitialize();
        other_.reset();
        FaultTest::TearDown();
    }

    /// The counterparty of `C` keeps a journal and takes these arguments.
    void startBoth(std::vector<std::string> arguments) {
        std::filesystem::create_directories(folder_ + "/theirs");
        arguments.insert(arguments.end(),
                         {"--store", folder_ + "/theirs", "--journal", folder_ + "/journal"});
        acceptor_.emplace(CRASH_COUNTERPARTY, arguments);
        other_.emplace(TEST_ACCEPTOR, std::vector<std::string>{"--sender", "OTHERS"});
        port_ = portOf(*acceptor_);
        std::string const first = sessionText();
        port_ = portOf(*other_);
        std::string second = sessionText();
        replace(second, "ConnectionName=C", "ConnectionName=D");
        replace(second, "TargetCompID=THEM", "TargetCompID=OTHERS");
        ZANEngineProxy::initialize(Url("embedded:" + writeSessionFile(first + second)));
    }

    void connectBoth() {
        engine().connect(me, "C");
        engine().connect(me, "D");
    }

    std::size_t ordersInJournal() const {
        return crash::readJournal(folder_ + "/journal").taken.size();
    }

    /// A listener of all messages of a connection, straight from the engine.
    EventRecorder& recordOf(std::string const& connection) {
        auto* const recorder = new EventRecorder;
        recorders_.push_back(counted_ptr<IZANEventListener>(recorder));
        engine().subscribeDirect(me, connection, true, true, false, recorders_.back());
        return *recorder;
    }

    /// Sends orders at `D`, waits for the report to each, and tells how long the sends took,
    /// sorted.
    std::vector<std::chrono::microseconds> timesOfTalkingAtD(int count) {
        EventRecorder& recorder = recordOf("D");
        std::vector<std::chrono::microseconds> times;
        for (int i = 0; i < count; ++i) {
            auto const before = Clock::now();
            engine().sendMessage(me, "D", order("D-" + std::to_string(i)));
            times.push_back(
                std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - before));
        }
        EXPECT_TRUE(recorder.waitFor(isReport, static_cast<std::size_t>(count)));
        std::ranges::sort(times);
        return times;
    }

    std::optional<ChildProcess> other_;

private:
    static int portOf(ChildProcess& counterparty) {
        std::string const line = counterparty.waitForLine("listening on");
        return std::stoi(line.substr(line.rfind(':') + 1));
    }

    static void replace(std::string& text, std::string const& what, std::string const& by) {
        text.replace(text.find(what), what.size(), by);
    }
};

#endif
