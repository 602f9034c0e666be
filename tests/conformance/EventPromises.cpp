// How events reach the listeners of the facade.
#include "conformance/Trial.h"
#include "infra/Time.h"

#include <algorithm>
#include <atomic>
#include <stdexcept>
#include <thread>

namespace zan::conformance {

namespace {

/// A listener that does something of its own with each event.
class ActingListener : public IZANEventListener {
public:
    explicit ActingListener(std::function<void(ZANEvent const&)> act) : act_(std::move(act)) {}
    void processEvent(counted_ptr<ZANEvent> event) override { act_(*event); }

private:
    std::function<void(ZANEvent const&)> act_;
};

void subscribe(Trial& trial, counted_ptr<IZANEventListener>& listener) {
    Trial::engine().subscribe(Trial::me, listener, trial.name(), ZANEngineDefs::APP_EVENT_TYPE);
}

void carryNumberTimeAndName(Trial& trial) {
    EventRecorder& recorder = trial.listen();
    trial.connect();
    std::string const id = trial.newId();
    long const number = trial.send(id);
    ASSERT_TRUE(trial.waitForOrder(recorder, id, number));
    SeenEvent const seen = recorder.first([&](SeenEvent const& e) { return e.id == number; });
    EXPECT_EQ(seen.kind, SeenEvent::Kind::App);
    EXPECT_EQ(seen.connection, trial.name());
    EXPECT_EQ(seen.field(16580), std::to_string(number));
    EXPECT_EQ(seen.field(35), "D");
    EXPECT_NEAR(seen.time, static_cast<double>(infra::Time::now().getMillis()), 120000);
}

void carryTheFieldsThatWereSent(Trial& trial) {
    EventRecorder& recorder = trial.listen();
    trial.connect();
    std::string const id = trial.newId();
    long const number = trial.send(id);
    ASSERT_TRUE(trial.waitForOrder(recorder, id, number));
    SeenEvent const seen = recorder.first([&](SeenEvent const& e) { return e.id == number; });
    auto const sent = trial.orderModel(id)->getFieldGroup();
    for (auto fields = sent->fieldIterator(); fields->hasNext(); fields->next()) {
        auto const field = fields->current();
        EXPECT_EQ(seen.field(field->getTag()), field->getValue().asString()) << field->getTag();
    }
}

counted_ptr<ZANFieldGroup> instanceOf(int groupTag, int tag, std::string const& value) {
    counted_ptr<ZANFieldGroup> group(new ZANFieldGroup(groupTag));
    group->setFieldValue(tag, value);
    return group;
}

void carryNestedGroups(Trial& trial) {
    EventRecorder& recorder = trial.listen();
    trial.connect();
    std::string const id = trial.newId();
    auto const order = trial.orderModel(id);
    auto const broker = instanceOf(453, 448, "BROKER");
    broker->setFieldValue(447, "D");
    broker->setFieldValue(452, 1);
    broker->addGroup(instanceOf(802, 523, "DESK"));
    broker->addGroup(instanceOf(802, 523, "FLOOR"));
    order->getFieldGroup()->addGroup(broker);
    order->getFieldGroup()->addGroup(instanceOf(453, 448, "CLIENT"));
    long const number = Trial::engine().sendMessage(Trial::me, trial.name(), order);
    ASSERT_TRUE(trial.waitForOrder(recorder, id, number));
    EXPECT_EQ(recorder.first([&](SeenEvent const& e) { return e.id == number; }).groups,
              "453(447=D|448=BROKER|452=1|802(523=DESK|)802(523=FLOOR|))453(448=CLIENT|)");
}

void comeOnceAndInOrder(Trial& trial) {
    EventRecorder& recorder = trial.listen();
    trial.connect();
    std::vector<long> numbers;
    std::string last;
    for (int i = 0; i < 200; ++i) {
        last = trial.newId();
        numbers.push_back(trial.send(last));
    }
    ASSERT_TRUE(trial.waitForOrder(recorder, last, numbers.back()));
    std::vector<long> seen;
    for (SeenEvent const& each : recorder.events()) {
        bool const isSent = std::ranges::binary_search(numbers, static_cast<long>(each.id));
        if (isSent) {
            seen.push_back(each.id);
        }
    }
    EXPECT_EQ(seen, numbers);
}

void comeOneAtATime(Trial& trial) {
    std::atomic<int> inside{0};
    std::atomic<int> most{0};
    std::atomic<int> calls{0};
    counted_ptr<IZANEventListener> listener(new ActingListener([&](ZANEvent const&) {
        int const now = ++inside;
        most = std::max(most.load(), now);
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
        --inside;
        ++calls;
    }));
    subscribe(trial, listener);
    trial.connect();
    for (int i = 0; i < 50; ++i) {
        trial.send(trial.newId());
    }
    EXPECT_TRUE(trial.eventually([&] { return calls >= 50; }));
    ZANEngineProxy::uninitialize();
    EXPECT_EQ(most, 1) << "the events of one connection came on several threads at once";
}

void comeAlsoAfterAListenerThrew(Trial& trial, std::function<void()> const& fail) {
    std::atomic<int> calls{0};
    counted_ptr<IZANEventListener> listener(new ActingListener([&](ZANEvent const&) {
        ++calls;
        fail();
    }));
    subscribe(trial, listener);
    trial.connect();
    for (int i = 0; i < 3; ++i) {
        trial.send(trial.newId());
    }
    EXPECT_TRUE(trial.eventually([&] { return calls >= 3; }));
    EXPECT_TRUE(Trial::engine().isConnected(Trial::me, trial.name()));
    ZANEngineProxy::uninitialize();
}

void comeAlsoAfterAListenerFailed(Trial& trial) {
    comeAlsoAfterAListenerThrew(trial, [] { throw std::runtime_error("asked to fail"); });
}

void comeAlsoAfterAListenerThrewANumber(Trial& trial) {
    comeAlsoAfterAListenerThrew(trial, [] { throw 42; });
}

void letAListenerCallTheEngine(Trial& trial) {
    std::atomic<bool> isBegun{false};
    std::atomic<bool> isDone{false};
    counted_ptr<IZANEventListener> listener(new ActingListener([&](ZANEvent const&) {
        if (!isBegun.exchange(true)) {
            trial.send(trial.newId());
            Trial::engine().isConnected(Trial::me, trial.name());
            isDone = true;
        }
    }));
    subscribe(trial, listener);
    trial.connect();
    trial.send(trial.newId());
    EXPECT_TRUE(trial.eventually([&] { return isDone.load(); }));
    ZANEngineProxy::uninitialize();
}

void letAListenerUnsubscribeItself(Trial& trial) {
    std::atomic<int> calls{0};
    counted_ptr<IZANEventListener> listener;
    listener = counted_ptr<IZANEventListener>(new ActingListener([&](ZANEvent const&) {
        ++calls;
        Trial::engine().unsubscribe(Trial::me, listener, trial.name(),
                                    ZANEngineDefs::APP_EVENT_TYPE);
    }));
    subscribe(trial, listener);
    EventRecorder& other = trial.listen();
    trial.connect();
    trial.send(trial.newId());
    std::string const id = trial.newId();
    EXPECT_TRUE(trial.waitForOrder(other, id, trial.send(id)));
    ZANEngineProxy::uninitialize();
    EXPECT_EQ(calls, 1);
}

} // namespace

Promises eventPromises() {
    using A = Ability;
    std::vector<A> const events = {A::Connections, A::Sending, A::Events};
    return {
        {"Events", "CarryNumberTimeAndName", events, carryNumberTimeAndName},
        {"Events", "CarryTheFieldsThatWereSent", events, carryTheFieldsThatWereSent},
        {"Events", "CarryNestedGroups", events, carryNestedGroups},
        {"Events", "ComeOnceAndInOrder", events, comeOnceAndInOrder},
        {"Events", "ComeOneAtATime", events, comeOneAtATime},
        {"Events", "ComeAlsoAfterAListenerFailed", events, comeAlsoAfterAListenerFailed},
        {"Events", "ComeAlsoAfterAListenerThrewANumber", events,
         comeAlsoAfterAListenerThrewANumber},
        {"Events", "LetAListenerCallTheEngine", events, letAListenerCallTheEngine},
        {"Events", "LetAListenerUnsubscribeItself", events, letAListenerUnsubscribeItself},
    };
}

} // namespace zan::conformance
