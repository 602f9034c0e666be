// Batches, what applications tell each other, and calls of many threads.
#include "conformance/Trial.h"
#include "errors/ZANInvalidMessageException.h"
#include "errors/ZANNotConnectedException.h"

#include <atomic>
#include <map>
#include <thread>

namespace zan::conformance {

namespace {

Messages batchOf(Trial& trial, std::string const& prefix, int count) {
    Messages batch;
    for (int i = 0; i < count; ++i) {
        batch.push_back(trial.orderModel(prefix + std::to_string(i)));
    }
    return batch;
}

// What follows the prefix in the ids of its orders, in the order in which they came.
std::vector<std::string> ordersOf(EventRecorder& recorder, std::string const& prefix) {
    std::vector<std::string> ids;
    for (SeenEvent const& each : recorder.events()) {
        std::string const id = each.field(11);
        if (each.isType("D") && id.starts_with(prefix)) {
            ids.push_back(id.substr(prefix.size()));
        }
    }
    return ids;
}

std::vector<std::string> numbersBelow(int count) {
    std::vector<std::string> numbers;
    for (int i = 0; i < count; ++i) {
        numbers.push_back(std::to_string(i));
    }
    return numbers;
}

counted_ptr<ZANMessage> heartbeat() {
    return counted_ptr<ZANMessage>(
        new ZANMessage(counted_ptr<ZANFieldGroup>(new ZANFieldGroup(std::string("0")))));
}

void batchesKeepTheirOrder(Trial& trial) {
    EventRecorder& recorder = trial.listen();
    trial.connect();
    std::string const prefix = trial.newId() + "-";
    Trial::engine().sendMultipleMessages(Trial::me, trial.name(), batchOf(trial, prefix, 50));
    EXPECT_TRUE(trial.eventually([&] { return ordersOf(recorder, prefix).size() >= 50; }));
    EXPECT_EQ(ordersOf(recorder, prefix), numbersBelow(50));
}

void batchesAreRefusedWhole(Trial& trial) {
    EventRecorder& recorder = trial.listen();
    trial.connect();
    std::string const prefix = trial.newId() + "-";
    Messages batch = batchOf(trial, prefix, 3);
    batch.push_back(heartbeat());
    expectFailure<ZANInvalidMessageException>(
        [&] { Trial::engine().sendMultipleMessages(Trial::me, trial.name(), batch); });
    std::string const next = trial.newId();
    ASSERT_TRUE(trial.waitForOrder(recorder, next, trial.send(next)));
    EXPECT_TRUE(ordersOf(recorder, prefix).empty());
}

void batchesMayBeEmpty(Trial& trial) {
    trial.connect();
    EXPECT_NO_THROW(Trial::engine().sendMultipleMessages(Trial::me, trial.name(), {}));
}

void batchesNeedASession(Trial& trial) {
    expectFailure<ZANNotConnectedException>([&] {
        Trial::engine().sendMultipleMessages(Trial::me, trial.name(),
                                             batchOf(trial, trial.newId(), 2));
    });
}

void postedReachesListeners(Trial& trial) {
    EventRecorder& recorder = trial.listen();
    std::string const asText = trial.newId();
    std::string const asModel = trial.newId();
    long const first =
        Trial::engine().postInternalMessage(Trial::me, trial.name(), trial.order(asText));
    long const second =
        Trial::engine().postInternalMessage(Trial::me, trial.name(), trial.orderModel(asModel));
    EXPECT_LT(first, second);
    EXPECT_TRUE(trial.waitForOrder(recorder, asText, first)) << "posting needs no session";
    EXPECT_TRUE(trial.waitForOrder(recorder, asModel, second));
}

void postedBatchesReachListeners(Trial& trial) {
    EventRecorder& recorder = trial.listen();
    std::string const prefix = trial.newId() + "-";
    Trial::engine().postMultipleInternalMessages(Trial::me, trial.name(),
                                                 batchOf(trial, prefix, 5));
    EXPECT_TRUE(trial.eventually([&] { return ordersOf(recorder, prefix).size() >= 5; }));
    EXPECT_EQ(ordersOf(recorder, prefix), numbersBelow(5));
}

void postingRefusesAdminMessages(Trial& trial) {
    expectFailure<ZANInvalidMessageException>(
        [&] { Trial::engine().postInternalMessage(Trial::me, trial.name(), "35=0"); });
}

void postedBatchesAreRefusedWhole(Trial& trial) {
    EventRecorder& recorder = trial.listen();
    std::string const prefix = trial.newId() + "-";
    Messages batch = batchOf(trial, prefix, 2);
    batch.push_back(heartbeat());
    expectFailure<ZANInvalidMessageException>(
        [&] { Trial::engine().postMultipleInternalMessages(Trial::me, trial.name(), batch); });
    std::string const next = trial.newId();
    long const number =
        Trial::engine().postInternalMessage(Trial::me, trial.name(), trial.order(next));
    ASSERT_TRUE(trial.waitForOrder(recorder, next, number));
    EXPECT_TRUE(ordersOf(recorder, prefix).empty());
}

// One thread's messages, and the numbers that they got.
using Sent = std::map<long, std::string>;

void sendMany(Trial& trial, std::string const& prefix, int count, Sent& sent) {
    for (int i = 0; i < count; ++i) {
        std::string const id = prefix + std::to_string(i);
        sent[trial.send(id)] = id;
    }
}

void sendersOfManyThreadsGetNumbersOfTheirOwn(Trial& trial) {
    EventRecorder& recorder = trial.listen();
    trial.connect();
    constexpr int senders = 4;
    constexpr int each = 50;
    std::vector<Sent> sent(senders);
    std::vector<std::thread> threads;
    for (int i = 0; i < senders; ++i) {
        std::string const prefix = trial.newId() + "-";
        threads.emplace_back([&trial, &sent, prefix, i] {
            sendMany(trial, prefix, each, sent[static_cast<std::size_t>(i)]);
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    Sent all;
    for (Sent const& one : sent) {
        all.insert(one.begin(), one.end());
    }
    EXPECT_EQ(all.size(), static_cast<std::size_t>(senders * each));
    for (auto const& [number, id] : all) {
        EXPECT_TRUE(trial.waitForOrder(recorder, id, number)) << id << " under " << number;
    }
}

void questionsOfManyThreadsAreAnswered(Trial& trial) {
    trial.connect();
    std::atomic<int> right{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int j = 0; j < 100; ++j) {
                auto const state = Trial::engine().getConnectionState(Trial::me, trial.name());
                bool const is = Trial::engine().isConnected(Trial::me, trial.name());
                right += is && state->isSessionActive() ? 1 : 0;
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(right, 400);
}

void listenersMayComeAndGoMeanwhile(Trial& trial) {
    EventRecorder& recorder = trial.listen();
    trial.connect();
    std::atomic<bool> isDone{false};
    // Counts are plain: the last references go when no event can be on its way any more.
    std::vector<counted_ptr<IZANEventListener>> gone;
    std::thread visitor([&] {
        while (!isDone) {
            counted_ptr<IZANEventListener> passing(new EventRecorder);
            Trial::engine().subscribe(Trial::me, passing, trial.name(),
                                      ZANEngineDefs::APP_EVENT_TYPE);
            std::this_thread::yield();
            Trial::engine().unsubscribe(Trial::me, passing, trial.name(),
                                        ZANEngineDefs::APP_EVENT_TYPE);
            gone.push_back(std::move(passing));
        }
    });
    Sent sent;
    sendMany(trial, trial.newId() + "-", 100, sent);
    for (auto const& [number, id] : sent) {
        EXPECT_TRUE(trial.waitForOrder(recorder, id, number));
    }
    isDone = true;
    visitor.join();
    ZANEngineProxy::uninitialize();
}

} // namespace

Promises manyAtOncePromises() {
    using A = Ability;
    std::vector<A> const batches = {A::Connections, A::Sending, A::Events, A::Batches};
    std::vector<A> const posting = {A::Connections, A::Events, A::Posting};
    std::vector<A> const events = {A::Connections, A::Sending, A::Events};
    return {
        {"Batches", "KeepTheirOrder", batches, batchesKeepTheirOrder},
        {"Batches", "AreRefusedWhole", batches, batchesAreRefusedWhole},
        {"Batches", "MayBeEmpty", {A::Connections, A::Batches}, batchesMayBeEmpty},
        {"Batches", "NeedASession", {A::Connections, A::Batches}, batchesNeedASession},
        {"Posting", "ReachesListeners", posting, postedReachesListeners},
        {"Posting", "OfBatchesReachesListeners", posting, postedBatchesReachListeners},
        {"Posting", "RefusesAdminMessages", posting, postingRefusesAdminMessages},
        {"Posting", "OfBatchesIsRefusedWhole", posting, postedBatchesAreRefusedWhole},
        {"Threads", "GetNumbersOfTheirOwn", events, sendersOfManyThreadsGetNumbersOfTheirOwn},
        {"Threads", "GetAnswers", {A::Connections}, questionsOfManyThreadsAreAnswered},
        {"Threads", "MaySubscribeWhileEventsCome", events, listenersMayComeAndGoMeanwhile},
    };
}

} // namespace zan::conformance
