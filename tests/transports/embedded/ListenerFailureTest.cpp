// What the embedded engine does, and tells, when a guaranteed listener fails on a message.
#include "EmbeddedFixture.h"

#include "guaranteed/ZANGMLAdapter.h"
#include "guaranteed/ZANGuaranteedEngineMessageListener.h"
#include "support/CapturedOutput.h"
#include "support/HttpClient.h"

#include <atomic>
#include <mutex>
#include <stdexcept>

namespace {

constexpr auto fromThem = ZANGuaranteedEngineMessageListener::APP_MSG_FROM_COUNTERPARTY;

/// Fails on reports of orders that are called `bad`, until it is told to be content.
class FailingListener : public EventRecorder {
public:
    void processEvent(counted_ptr<ZANEvent> event) override {
        ZANFieldGroup const& fields = *event->getMessage()->getFieldGroup();
        bool const isBadReport = fields.getField(35)->getValue().asString() == "8" &&
                                 fields.getField(11)->getValue().asString() == "bad";
        if (isBadReport && !isContent) {
            lastBad = event->getMessage()->getConnectionMessageId();
            ++failures;
            throw std::runtime_error("no such order");
        }
        EventRecorder::processEvent(event);
    }

    std::atomic<bool> isContent{false};
    std::atomic<int> failures{0};
    std::atomic<int> lastBad{0};
};

class ListenerFailureTest : public EmbeddedTest {
protected:
    using Guaranteed = counted_ptr<ZANGuaranteedEngineMessageListener>;

    void SetUp() override {
        EmbeddedTest::SetUp();
        setDiagnosticSink(
            [this](DiagnosticLevel, std::string const& category, std::string const& text) {
                std::lock_guard const lock(mutex_);
                told_ += category + ": " + text + "\n";
            });
        startAcceptor();
        startAgain();
    }

    void TearDown() override {
        listener_.reset();
        EmbeddedTest::TearDown();
        setDiagnosticSink(nullptr);
    }

    void startAgain() {
        ZANEngineProxy::initialize(
            Url("embedded:" + writeSessionFile(sessionText()) + "?client=desk&metrics=0"));
        engine().connect(me, "C");
        failing_ = new FailingListener;
        listener_ = Guaranteed(
            new ZANGuaranteedEngineMessageListener(counted_ptr<IZANEventListener>(failing_)));
        engine().subscribeDirect(me, "C", false, true, false, listener_);
    }

    void stop() {
        engine().destroyDirectSubscriber(listener_);
        listener_.reset();
        ZANEngineProxy::uninitialize();
    }

    void order(std::string const& id) { engine().sendMessage(me, "C", EmbeddedTest::order(id)); }

    static HttpReply health() {
        std::string const properties = engine().getConnectionProperties(me, "C");
        std::size_t const colon = properties.find(':', properties.find("\nMetrics="));
        return httpGet(std::stoi(properties.substr(colon + 1)), "/healthz");
    }

    static std::string lastError() { return engine().getConnectionState(me, "C")->getLastError(); }

    bool wasTold(std::string const& text) {
        return eventually([&] {
            std::lock_guard const lock(mutex_);
            return told_.find(text) != std::string::npos;
        });
    }

    static bool isLateReport(SeenEvent const& event) {
        return isReport(event) && event.field(11) == "late";
    }

    std::string reported() { return idsOf(*failing_); }

    static std::string idsOf(EventRecorder& recorder) {
        std::string text;
        for (SeenEvent const& event : recorder.events()) {
            if (isReport(event)) {
                text += (text.empty() ? "" : " ") + event.field(11);
            }
        }
        return text;
    }

    FailingListener* failing_ = nullptr;
    Guaranteed listener_;
    std::mutex mutex_;
    std::string told_;
};

TEST_F(ListenerFailureTest, IsToldInStateHealthAndDiagnosticsUntilItIsOver) {
    CapturedOutput const output;
    order("good");
    order("bad");
    order("late");
    ASSERT_TRUE(eventually([&] { return failing_->failures >= 2; }));
    std::string const id = std::to_string(failing_->lastBad);
    std::string const state =
        "the guaranteed listener \"desk\" fails on message " + id + ": no such order";
    EXPECT_EQ(lastError(), state);
    HttpReply const sick = health();
    EXPECT_EQ(sick.status, 503);
    EXPECT_EQ(sick.body.find("connection C: the guaranteed listener \"desk\" has failed "), 0u)
        << sick.body;
    EXPECT_NE(sick.body.find(" times on message " + id + ": no such order\n"), std::string::npos)
        << sick.body;
    EXPECT_TRUE(wasTold("delivery: connection C: a listener failed on message " + id +
                        ": no such order; \"desk\" gets it again in 250 ms, and nothing behind "
                        "it before\n"));
    EXPECT_TRUE(wasTold("gets it again in 500 ms"));
    EXPECT_EQ(reported(), "good");
    failing_->isContent = true;
    ASSERT_TRUE(failing_->waitFor(isLateReport));
    EXPECT_EQ(reported(), "good bad late");
    EXPECT_TRUE(eventually([] { return lastError().empty() && health().status == 200; }));
    EXPECT_TRUE(wasTold("delivery: connection C: the guaranteed listener \"desk\" goes on\n"));
    stop();
    EXPECT_NE(output.text().find("Connection C: a listener failed on message " + id),
              std::string::npos);
}

TEST_F(ListenerFailureTest, DoesNotReachOtherListeners) {
    EventRecorder& plain = record();
    auto* const recorder = new EventRecorder;
    Guaranteed other(
        new ZANGuaranteedEngineMessageListener(counted_ptr<IZANEventListener>(recorder)));
    engine().subscribeDirect(me, "C", false, true, false, other);
    for (char const* const id : {"good", "bad", "late"}) {
        order(id);
    }
    EXPECT_TRUE(plain.waitFor(isLateReport));
    EXPECT_TRUE(recorder->waitFor(isLateReport));
    EXPECT_EQ(idsOf(*recorder), "good bad late");
    EXPECT_EQ(reported(), "good");
    engine().destroyDirectSubscriber(other);
}

TEST_F(ListenerFailureTest, IsOverWhenTheApplicationSetsTheMark) {
    order("bad");
    order("late");
    ASSERT_TRUE(eventually([&] { return failing_->failures >= 4; })) << "the pause is long by now";
    listener_->skip("C", failing_->lastBad, fromThem);
    EXPECT_TRUE(failing_->waitFor(isLateReport));
    EXPECT_EQ(reported(), "late");
    EXPECT_EQ(listener_->getAdapter().getLastConsumedMessage("C", fromThem), failing_->lastBad);
}

TEST_F(ListenerFailureTest, KeepsTheMessageAlsoWhenTheProcessEnds) {
    order("good");
    order("bad");
    order("late");
    ASSERT_TRUE(eventually([&] { return failing_->failures >= 1; }));
    int const good = failing_->first(isReport).id;
    listener_->setLastConsumedAppMessageFromCounterPartyId("C", good);
    int const bad = failing_->lastBad;
    stop();
    startAgain();
    EXPECT_EQ(listener_->getAdapter().getLastConsumedMessage("C", fromThem), good);
    listener_->retrievePotentiallyLostMessages(); // returns though the listener fails again
    EXPECT_EQ(failing_->failures, 1);
    EXPECT_EQ(failing_->lastBad, bad);
    EXPECT_EQ(reported(), "");
    listener_->skip("C", bad, fromThem);
    EXPECT_TRUE(failing_->waitFor(isLateReport));
    EXPECT_EQ(reported(), "late");
}

TEST_F(ListenerFailureTest, EndsWithItsSubscription) {
    order("bad");
    ASSERT_TRUE(eventually([&] { return failing_->failures >= 1; }));
    engine().destroyDirectSubscriber(listener_);
    EXPECT_TRUE(eventually([] { return lastError().empty(); }));
    int const failures = failing_->failures;
    std::this_thread::sleep_for(std::chrono::seconds(2));
    EXPECT_EQ(failing_->failures, failures);
}

TEST_F(ListenerFailureTest, CatchesUpOverManyMessagesInTheirOrder) {
    constexpr int late = 2500;
    order("bad");
    for (int i = 0; i < late; ++i) {
        order(std::to_string(i));
    }
    failing_->isContent = true;
    std::string const last = std::to_string(late - 1);
    ASSERT_TRUE(
        failing_->waitFor([&](SeenEvent const& e) { return isReport(e) && e.field(11) == last; }));
    order("live");
    ASSERT_TRUE(failing_->waitFor(
        [&](SeenEvent const& e) { return isReport(e) && e.field(11) == "live"; }));
    int previous = 0;
    int reports = 0;
    for (SeenEvent const& event : failing_->events()) {
        EXPECT_GT(event.id, previous);
        previous = event.id;
        reports += isReport(event) ? 1 : 0;
    }
    EXPECT_EQ(reports, late + 2);
}

// The failed message's mark, set by the event of a message that came before.
TEST_F(ListenerFailureTest, LeavesMarksToTheApplication) {
    order("good");
    order("bad");
    ASSERT_TRUE(eventually([&] { return failing_->failures >= 1; }));
    EXPECT_EQ(listener_->getAdapter().getLastConsumedMessage("C", fromThem), -1);
}

TEST_F(ListenerFailureTest, MayEndTheEngineAndThrow) {
    struct Ender : IZANEventListener {
        void processEvent(counted_ptr<ZANEvent>) override {
            ZANEngineProxy::uninitialize();
            isDone = true;
            throw std::runtime_error("and now this");
        }
        explicit Ender(std::atomic<bool>& done) : isDone(done) {}
        std::atomic<bool>& isDone;
    };
    std::atomic<bool> isDone{false};
    Guaranteed ender(
        new ZANGuaranteedEngineMessageListener(counted_ptr<IZANEventListener>(new Ender(isDone))));
    engine().subscribeDirect(me, "C", false, true, false, ender);
    ender.reset();
    engine().destroyDirectSubscriber(listener_);
    order("x");
    EXPECT_TRUE(eventually([&] { return isDone.load(); }));
    EXPECT_TRUE(eventually([this] {
        try {
            startAgain();
            return true;
        } catch (InfraException const&) {
            return false;
        }
    }));
}

} // namespace
