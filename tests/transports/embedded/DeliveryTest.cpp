#include "EmbeddedFixture.h"

#include "support/CapturedOutput.h"
#include "support/Hold.h"

#include <atomic>
#include <map>
#include <set>
#include <stdexcept>
#include <thread>

namespace {

using DeliveryTest = EmbeddedTest;

counted_ptr<IZANEventListener> subscribed(EventRecorder* recorder, std::string const& type) {
    counted_ptr<IZANEventListener> listener(recorder);
    ZANEngineProxy::getInstance().subscribe(UserTicket("tester", ""), listener, "C", type);
    return listener;
}

TEST_F(DeliveryTest, ReportsAListenerThatThrowsAndGoesOn) {
    startAndConnect();
    CapturedOutput const output;
    auto* const failing = new EventRecorder;
    std::atomic<int> calls{0};
    failing->onEvent([&calls] {
        ++calls;
        throw std::runtime_error("no room\nfor more");
    });
    auto const listener = subscribed(failing, ZANEngineDefs::APP_EVENT_TYPE);
    EventRecorder& direct = record();
    long const id = engine().sendMessage(me, "C", order("t-1"));
    ASSERT_TRUE(direct.waitFor(isReport));
    ASSERT_TRUE(eventually([&] { return calls == 2; }));
    ZANEngineProxy::uninitialize();
    EXPECT_NE(output.text().find("Connection C: a listener failed on message " +
                                 std::to_string(id) + ": no room for more\n"),
              std::string::npos)
        << output.text();
}

TEST_F(DeliveryTest, ReportsADirectListenerThatThrowsAndGoesOn) {
    startAndConnect();
    CapturedOutput const output;
    record([] { throw 42; });
    EventRecorder& next = record();
    engine().sendMessage(me, "C", order("t-2"));
    EXPECT_TRUE(next.waitFor(isReport));
    ZANEngineProxy::uninitialize();
    EXPECT_NE(output.text().find(": unknown exception\n"), std::string::npos) << output.text();
}

TEST_F(DeliveryTest, KeepsTheOrderOfSeveralSendersAndNumbersEachMessageOnce) {
    startAndConnect({"--no-reports"});
    EventRecorder& recorder = record();
    constexpr int senders = 4;
    constexpr int each = 250;
    std::vector<std::vector<long>> ids(senders);
    std::vector<std::thread> threads;
    for (int sender = 0; sender < senders; ++sender) {
        threads.emplace_back([&, sender] {
            for (int i = 0; i < each; ++i) {
                std::string const id = std::to_string(sender) + "-" + std::to_string(i);
                ids[sender].push_back(engine().sendMessage(me, "C", order(id)));
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    auto const isOrder = [](SeenEvent const& e) { return e.isType("D"); };
    ASSERT_TRUE(recorder.waitFor(isOrder, senders * each));
    std::map<long, std::string> delivered;
    long last = 0;
    long number = 0;
    for (SeenEvent const& event : recorder.events()) {
        if (isOrder(event)) {
            EXPECT_GT(event.id, last);
            EXPECT_GT(std::stol(event.field(34)), number);
            last = event.id;
            number = std::stol(event.field(34));
            delivered[event.id] = event.field(11);
        }
    }
    ASSERT_EQ(delivered.size(), static_cast<std::size_t>(senders * each));
    for (int sender = 0; sender < senders; ++sender) {
        for (int i = 0; i < each; ++i) {
            EXPECT_EQ(delivered[ids[sender][i]], std::to_string(sender) + "-" + std::to_string(i));
        }
    }
}

TEST_F(DeliveryTest, HoldsBackForASlowListenerAndLosesNothing) {
    startAndConnect();
    Hold slow;
    EventRecorder& recorder = record(slow.wait());
    constexpr std::size_t orders = 3000;
    std::thread sending([&] {
        for (std::size_t i = 0; i < orders; ++i) {
            engine().sendMessage(me, "C", order(std::to_string(i)));
        }
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(500));
    EXPECT_TRUE(isConnected());
    slow.release();
    sending.join();
    EXPECT_TRUE(recorder.waitFor(isReport, orders));
    std::set<std::string> reported;
    for (SeenEvent const& event : recorder.events()) {
        if (isReport(event)) {
            EXPECT_TRUE(reported.insert(event.field(11)).second);
        }
    }
    EXPECT_EQ(reported.size(), orders);
    ZANEngineProxy::uninitialize();
}

} // namespace
