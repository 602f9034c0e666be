// `/metrics` and `/healthz` of an engine that works.
#include "EmbeddedFixture.h"

#include "errors/ZANEngineException.h"
#include "guaranteed/ZANGMLAdapter.h"
#include "guaranteed/ZANGuaranteedEngineMessageListener.h"
#include "infra/WrongConfigurationException.h"
#include "support/Hold.h"
#include "support/HttpClient.h"
#include "support/PrometheusText.h"

#include <atomic>
#include <stdexcept>
#include <thread>

namespace {

class MetricsTest : public EmbeddedTest {
protected:
    void startEngineWithMetrics(std::string const& parameters = "metrics=0",
                                std::vector<std::string> const& arguments = {}) {
        startAcceptor(arguments);
        ZANEngineProxy::initialize(
            Url("embedded:" + writeSessionFile(sessionText()) + "?" + parameters));
    }

    static std::string metricsAddress() {
        std::string const properties = engine().getConnectionProperties(me, "C");
        std::size_t const at = properties.find("\nMetrics=");
        if (at == std::string::npos) {
            return "";
        }
        std::size_t const begin = at + std::string("\nMetrics=").size();
        return properties.substr(begin, properties.find('\n', begin) - begin);
    }

    static int metricsPort() {
        std::string const address = metricsAddress();
        return std::stoi(address.substr(address.rfind(':') + 1));
    }

    static PrometheusText scrape() {
        HttpReply const reply = httpGet(metricsPort(), "/metrics");
        EXPECT_EQ(reply.status, 200);
        EXPECT_NE(reply.head.find("Content-Type: text/plain; version=0.0.4"), std::string::npos);
        return PrometheusText(reply.body);
    }

    /// Sends orders, and returns when the report to each was delivered.
    void trade(int count) {
        EventRecorder& recorder = record();
        for (int i = 0; i < count; ++i) {
            engine().sendMessage(me, "C", order("M-" + std::to_string(i)));
        }
        ASSERT_TRUE(recorder.waitFor(isReport, static_cast<std::size_t>(count)));
    }

    static std::string messages(std::string const& direction, std::string const& type) {
        return "zan_messages_total{connection=\"C\",direction=\"" + direction + "\",type=\"" +
               type + "\"}";
    }

    static std::string refusalOf(std::string const& parameters, std::string const& file) {
        return failureOf<WrongConfigurationException>(
            [&] { ZANEngineProxy::initialize(Url("embedded:" + file + "?" + parameters)); });
    }
};

TEST_F(MetricsTest, AreServedNowhereByDefault) {
    startAcceptor();
    startEngine();
    EXPECT_EQ(metricsAddress(), "");
}

TEST_F(MetricsTest, AgreeWithWhatWasSentAndReceived) {
    startEngineWithMetrics();
    EXPECT_EQ(scrape()["zan_logged_on{connection=\"C\"}"], 0);
    engine().connect(me, "C");
    trade(7);
    PrometheusText const text = scrape();
    EXPECT_EQ(text["zan_link_up{connection=\"C\"}"], 1);
    EXPECT_EQ(text["zan_logged_on{connection=\"C\"}"], 1);
    EXPECT_EQ(text[messages("out", "A")], 1);
    EXPECT_EQ(text[messages("out", "D")], 7);
    EXPECT_EQ(text[messages("in", "A")], 1);
    EXPECT_EQ(text[messages("in", "8")], 7);
    EXPECT_EQ(text["zan_next_sequence_number{connection=\"C\",direction=\"out\"}"], 9);
    EXPECT_EQ(text["zan_next_sequence_number{connection=\"C\",direction=\"in\"}"], 9);
    EXPECT_GE(text["zan_log_commit_seconds_count{connection=\"C\"}"], 8);
    EXPECT_GT(text["zan_log_commit_seconds_sum{connection=\"C\"}"], 0);
    EXPECT_GT(text["zan_log_bytes{connection=\"C\",part=\"messages\"}"], 0);
    EXPECT_GT(text["zan_data_free_bytes"], 0);
    EXPECT_EQ(text["zan_ailments"], 0);
}

TEST_F(MetricsTest, TellALogout) {
    startEngineWithMetrics();
    engine().connect(me, "C");
    engine().disconnect(me, "C", "");
    PrometheusText const text = scrape();
    EXPECT_EQ(text["zan_link_up{connection=\"C\"}"], 0);
    EXPECT_EQ(text["zan_logged_on{connection=\"C\"}"], 0);
    EXPECT_EQ(text[messages("out", "5")], 1);
    EXPECT_EQ(text[messages("in", "5")], 1);
}

TEST_F(MetricsTest, CountWhatIsSentAgainAndWhatIsPosted) {
    startEngineWithMetrics();
    engine().connect(me, "C");
    trade(3);
    infra::Time const now = infra::Time::now();
    EXPECT_EQ(engine().resendMessages(me, "C", infra::Time(now.getMillis() - 60'000), now, ""), 3);
    engine().postInternalMessage(me, "C", order("posted"));
    PrometheusText const text = scrape();
    EXPECT_EQ(text["zan_resent_messages_total{connection=\"C\",asked_by=\"application\"}"], 3);
    EXPECT_EQ(text[messages("out", "D")], 6);
    EXPECT_EQ(text["zan_posted_messages_total{connection=\"C\"}"], 1);
}

TEST_F(MetricsTest, CountWhatTheCounterpartyAsksForAgain) {
    startEngineWithMetrics("metrics=0", {"--send", "35=2|7=1|16=0"});
    engine().connect(me, "C");
    // The first request must find no order yet: a gap fill answers it.
    ASSERT_TRUE(eventually([] { return scrape().has(messages("out", "4")); }));
    trade(3);
    engine().disconnect(me, "C", "");
    engine().connect(me, "C");
    EXPECT_TRUE(eventually([] {
        return scrape()["zan_resent_messages_total{connection=\"C\",asked_by=\"counterparty\"}"] ==
               3;
    }));
    EXPECT_EQ(scrape()[messages("in", "2")], 2);
}

TEST_F(MetricsTest, CountRejects) {
    startEngineWithMetrics("metrics=0", {"--send", "35=j|45=1|372=D|380=3|58=no"});
    engine().connect(me, "C");
    EXPECT_TRUE(eventually([] {
        return scrape()["zan_rejects_total{connection=\"C\",direction=\"in\",kind=\"business\"}"] ==
               1;
    }));
}

TEST_F(MetricsTest, CountTheExceptionsOfListeners) {
    startEngineWithMetrics();
    record([] { throw std::runtime_error("not today"); });
    engine().connect(me, "C");
    EXPECT_TRUE(
        eventually([] { return scrape()["zan_listener_failures_total{connection=\"C\"}"] > 0; }));
}

TEST_F(MetricsTest, TellHowFarGuaranteedListenersAreBehind) {
    startEngineWithMetrics("metrics=0&client=risk");
    engine().connect(me, "C");
    counted_ptr<ZANGuaranteedEngineMessageListener> listener(
        new ZANGuaranteedEngineMessageListener(counted_ptr<IZANEventListener>(new EventRecorder)));
    engine().subscribeDirect(me, "C", false, true, false, listener);
    long const first = engine().sendMessage(me, "C", order("1"));
    long const second = engine().sendMessage(me, "C", order("2"));
    std::string const labels = "{connection=\"C\",subscriber=\"risk\",stream=\"app_out\"}";
    EXPECT_FALSE(scrape().has("zan_mark" + labels));
    listener->setLastConsumedAppMessageToCounterPartyId("C", static_cast<int>(first));
    EXPECT_EQ(scrape()["zan_mark" + labels], first);
    EXPECT_EQ(scrape()["zan_mark_lag" + labels], second - first);
    listener->setLastConsumedAppMessageToCounterPartyId("C", static_cast<int>(second));
    EXPECT_EQ(scrape()["zan_mark_lag" + labels], 0);
    engine().destroyDirectSubscriber(listener);
}

TEST_F(MetricsTest, KnowTheLagOfBeforeTheStart) {
    startEngineWithMetrics("metrics=0&client=risk");
    engine().connect(me, "C");
    counted_ptr<ZANGuaranteedEngineMessageListener> listener(
        new ZANGuaranteedEngineMessageListener(counted_ptr<IZANEventListener>(new EventRecorder)));
    engine().subscribeDirect(me, "C", false, true, false, listener);
    long const first = engine().sendMessage(me, "C", order("1"));
    long const second = engine().sendMessage(me, "C", order("2"));
    listener->setLastConsumedAppMessageToCounterPartyId("C", static_cast<int>(first));
    engine().destroyDirectSubscriber(listener);
    listener.reset();
    ZANEngineProxy::uninitialize();
    ZANEngineProxy::initialize(Url("embedded:" + folder_ + "/sessions.cfg?metrics=0"));
    EXPECT_EQ(scrape()["zan_mark_lag{connection=\"C\",subscriber=\"risk\",stream=\"app_out\"}"],
              second - first);
}

TEST_F(MetricsTest, TellWhatWaitsForAListenerThatIsBusy) {
    startEngineWithMetrics();
    Hold busy;
    record(busy.wait());
    engine().connect(me, "C");
    engine().sendMessage(me, "C", order("1"));
    EXPECT_TRUE(eventually([] {
        PrometheusText const text = scrape();
        return text["zan_delivery_queue_length{connection=\"C\"}"] >= 4 &&
               text["zan_delivery_seconds{connection=\"C\"}"] > 0.05;
    }));
    busy.release();
    EXPECT_TRUE(eventually([] {
        PrometheusText const text = scrape();
        return text["zan_delivery_queue_length{connection=\"C\"}"] == 0 &&
               text["zan_delivery_seconds{connection=\"C\"}"] == 0;
    }));
}

TEST_F(MetricsTest, CanBeReadWhileTheEngineIsBusy) {
    startEngineWithMetrics();
    engine().connect(me, "C");
    std::atomic<bool> isEnding{false};
    std::thread sender([&isEnding] {
        while (!isEnding) {
            engine().sendMessage(me, "C", order("1"));
        }
    });
    double last = 0;
    for (int i = 0; i < 50; ++i) {
        PrometheusText const text = scrape();
        double const now = text[messages("out", "A")] +
                           (text.has(messages("out", "D")) ? text[messages("out", "D")] : 0);
        EXPECT_GE(now, last);
        last = now;
    }
    isEnding = true;
    sender.join();
    EXPECT_GT(last, 1);
}

TEST_F(MetricsTest, StandBesideHealthAndNothingElse) {
    startEngineWithMetrics();
    EXPECT_EQ(httpGet(metricsPort(), "/").status, 404);
    EXPECT_EQ(httpGet(metricsPort(), "/metrics/").status, 404);
    EXPECT_EQ(httpRequest(metricsPort(), "POST", "/metrics").status, 405);
}

TEST_F(MetricsTest, AreOnLoopbackUnlessToldOtherwise) {
    startEngineWithMetrics();
    EXPECT_EQ(metricsAddress().rfind("127.0.0.1:", 0), 0u) << metricsAddress();
    EXPECT_THROW(HttpConnection(metricsPort(), "127.0.0.2"), std::runtime_error);
    ZANEngineProxy::uninitialize();
    ZANEngineProxy::initialize(Url("embedded:" + folder_ + "/sessions.cfg?metrics=127.0.0.2:0"));
    EXPECT_EQ(metricsAddress().rfind("127.0.0.2:", 0), 0u) << metricsAddress();
    EXPECT_NO_THROW(HttpConnection(metricsPort(), "127.0.0.2"));
}

TEST_F(MetricsTest, AreRefusedAtABadAddress) {
    port_ = 1;
    std::string const file = writeSessionFile(sessionText());
    EXPECT_EQ(refusalOf("metrics=http", file),
              "engine.metrics=http: is no port; a port from 0 to 65535, alone or behind an address "
              "as in 127.0.0.1:9464 or [::1]:9464, would be right");
    EXPECT_EQ(refusalOf("metrics=192.0.2.1:0", file),
              "engine.metrics=192.0.2.1:0: cannot listen on 192.0.2.1:0: Cannot assign requested "
              "address; an address of this machine and a free port, or port 0 for one that the "
              "system picks, would be right");
    EXPECT_FALSE(std::filesystem::exists(file + ".data"));
    EXPECT_FALSE(ZANEngineProxy::isInitialized());
}

TEST_F(MetricsTest, AreRefusedWhereSomebodyElseListens) {
    startAcceptor();
    std::string const taken = std::to_string(port_);
    EXPECT_EQ(refusalOf("metrics=" + taken, writeSessionFile(sessionText())),
              "engine.metrics=" + taken + ": cannot listen on 127.0.0.1:" + taken +
                  ": Address already in use; an address of this machine and a free port, or port 0 "
                  "for one that the system picks, would be right");
}

TEST_F(MetricsTest, LeaveTheirPortWhenTheEngineStops) {
    startEngineWithMetrics();
    engine().connect(me, "C");
    int const port = metricsPort();
    HttpConnection const silent(port);
    auto const before = Clock::now();
    ZANEngineProxy::uninitialize();
    EXPECT_LT(Clock::now() - before, std::chrono::seconds(4));
    EXPECT_THROW(HttpConnection(port, "127.0.0.1"), std::runtime_error);
    ZANEngineProxy::initialize(
        Url("embedded:" + folder_ + "/sessions.cfg?metrics=" + std::to_string(port)));
    EXPECT_EQ(metricsPort(), port);
}

TEST_F(MetricsTest, CallAnEngineWellThatIsLoggedOff) {
    startEngineWithMetrics();
    HttpReply const reply = httpGet(metricsPort(), "/healthz");
    EXPECT_EQ(reply.status, 200);
    EXPECT_EQ(reply.body, "ok\n");
}

TEST_F(MetricsTest, CallAnEngineSickWhoseListenerDoesNotReturn) {
    startEngineWithMetrics();
    Hold busy;
    record(busy.wait());
    engine().connect(me, "C");
    auto const deadline = Clock::now() + std::chrono::seconds(20);
    HttpReply reply = httpGet(metricsPort(), "/healthz");
    EXPECT_EQ(reply.status, 200);
    while (reply.status == 200 && Clock::now() < deadline) {
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        reply = httpGet(metricsPort(), "/healthz");
    }
    EXPECT_EQ(reply.status, 503);
    EXPECT_EQ(reply.body, "connection C: a listener has not returned for more than 10 s\n");
    EXPECT_EQ(scrape()["zan_ailments"], 1);
    busy.release();
    EXPECT_TRUE(eventually([] { return httpGet(metricsPort(), "/healthz").status == 200; }));
}

} // namespace
