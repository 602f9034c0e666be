// `/healthz` while the disk is full.
#include "faults/FaultFixture.h"
#include "faults/SmallDisk.h"
#include "infra/Diagnostics.h"
#include "support/HttpClient.h"
#include "support/PrometheusText.h"

#include <mutex>

namespace {

class HealthTest : public FaultTest {
protected:
    void SetUp() override {
        FaultTest::SetUp();
        setDiagnosticSink(
            [this](DiagnosticLevel, std::string const& category, std::string const& text) {
                std::lock_guard const lock(mutex_);
                told_ += category + ": " + text + "\n";
            });
        disk_.emplace(dataFolder(), 24);
        if (!disk_->isMounted()) {
            GTEST_SKIP() << "only root may mount a small disk";
        }
        startAcceptor({"--no-reports"});
        ZANEngineProxy::initialize(
            Url("embedded:" + writeSessionFile(sessionText()) + "?metrics=0"));
        engine().connect(me, "C");
    }

    void TearDown() override {
        ZANEngineProxy::uninitialize();
        setDiagnosticSink(nullptr);
        disk_.reset();
        FaultTest::TearDown();
    }

    static HttpReply ask(std::string const& path) {
        std::string const properties = engine().getConnectionProperties(me, "C");
        std::size_t const colon = properties.find(':', properties.find("\nMetrics="));
        return httpGet(std::stoi(properties.substr(colon + 1)), path);
    }

    bool wasTold(std::string const& text) {
        return eventually([&] {
            std::lock_guard const lock(mutex_);
            return told_.find(text) != std::string::npos;
        });
    }

    std::optional<SmallDisk> disk_;
    std::mutex mutex_;
    std::string told_;
};

TEST_F(HealthTest, TurnsSickOnAFullDiskAndWellAgainWhenThereIsRoom) {
    send(10);
    EXPECT_EQ(ask("/healthz").status, 200);
    disk_->fill();
    sendUntilRefused();
    HttpReply const sick = ask("/healthz");
    EXPECT_EQ(sick.status, 503);
    EXPECT_EQ(sick.body.find("connection C: the message log fails: " + logFile()), 0u) << sick.body;
    EXPECT_EQ(std::ranges::count(sick.body, '\n'), 1);
    PrometheusText const figures(ask("/metrics").body);
    EXPECT_EQ(figures["zan_storage_failing{connection=\"C\"}"], 1);
    EXPECT_EQ(figures["zan_ailments"], 1);
    EXPECT_GE(figures["zan_log_commit_failures_total{connection=\"C\"}"], 1);
    EXPECT_EQ(figures["zan_data_free_bytes"], 0);
    disk_->makeRoom();
    send(1);
    EXPECT_EQ(ask("/healthz").status, 200);
    EXPECT_EQ(PrometheusText(ask("/metrics").body)["zan_storage_failing{connection=\"C\"}"], 0);
}

// Without a link nothing is stored that could show it.
TEST_F(HealthTest, IsWellAgainByItselfWhenThereIsRoom) {
    EventRecorder& recorder = record();
    disk_->fill();
    sendUntilRefused();
    engine().disconnect(me, "C", "");
    std::size_t const stored = engine().getMessageIds(me, "C", -1, false).size();
    EXPECT_EQ(ask("/healthz").status, 503);
    disk_->makeRoom();
    EXPECT_TRUE(eventually([] { return ask("/healthz").status == 200; }));
    EXPECT_FALSE(hasStorageError());
    EXPECT_TRUE(wasTold("log: connection C: messages are stored again\n"));
    EXPECT_EQ(engine().getMessageIds(me, "C", -1, false).size(), stored);
    EXPECT_TRUE(recorder.waitFor([](SeenEvent const& event) {
        return event.kind == SeenEvent::Kind::State && event.flags == FLAG_DISCONNECTED;
    }));
}

TEST_F(HealthTest, StaysSickWhileTheDiskIsFull) {
    disk_->fill();
    sendUntilRefused();
    engine().disconnect(me, "C", "");
    auto const end = Clock::now() + std::chrono::milliseconds(2500);
    while (Clock::now() < end) {
        ASSERT_EQ(ask("/healthz").status, 503);
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
}

TEST_F(HealthTest, IsToldToTheApplicationOnceEachWay) {
    send(10);
    disk_->fill();
    sendUntilRefused();
    for (int i = 0; i < 5; ++i) {
        EXPECT_THROW(engine().sendMessage(me, "C", order("never")), ZANPersistentStorageException);
    }
    disk_->makeRoom();
    send(1);
    EXPECT_TRUE(wasTold("log: connection C: messages are stored again\n"));
    std::string const trouble = "log: connection C: nothing can be stored: " + logFile();
    std::lock_guard const lock(mutex_);
    std::size_t const first = told_.find(trouble);
    ASSERT_NE(first, std::string::npos) << told_;
    EXPECT_EQ(told_.find(trouble, first + 1), std::string::npos) << told_;
}

} // namespace
