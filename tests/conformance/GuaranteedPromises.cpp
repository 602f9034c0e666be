// Guaranteed listeners: marks, filters, and what may have been lost. The marks are those of the
// stream of messages to the counterparty, because what is sent is what a test knows.
#include "conformance/Trial.h"
#include "errors/ZANConnectionUnknownException.h"
#include "errors/ZANEngineException.h"
#include "errors/ZANInvalidMessageException.h"
#include "guaranteed/ZANGMLAdapter.h"
#include "guaranteed/ZANGuaranteedEngineMessageListener.h"

#include <algorithm>
#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <thread>

namespace zan::conformance {

namespace {

using Guaranteed = counted_ptr<ZANGuaranteedEngineMessageListener>;
constexpr auto toThem = ZANGuaranteedEngineMessageListener::APP_MSG_TO_COUNTERPARTY;

/// A recorder that has something to do with each order first, and may fail.
class DutifulRecorder : public EventRecorder {
public:
    using Duty = std::function<void(std::string const& id)>;

    void processEvent(counted_ptr<ZANEvent> event) override {
        if (Duty const duty = current()) {
            duty(fieldOf(event->getMessage(), 11));
        }
        EventRecorder::processEvent(event);
    }

    void give(Duty duty) {
        std::lock_guard const lock(mutex_);
        duty_ = std::move(duty);
    }

private:
    Duty current() {
        std::lock_guard const lock(mutex_);
        return duty_;
    }

    std::mutex mutex_;
    Duty duty_;
};

/// A guaranteed listener on application messages and states that were sent, and where its events
/// go. The facade ends with it.
struct Desk {
    explicit Desk(Trial& itsTrial, UserTicket const& ticket = Trial::me)
        : trial(itsTrial), recorder(new DutifulRecorder),
          listener(
              new ZANGuaranteedEngineMessageListener(counted_ptr<IZANEventListener>(recorder))) {
        recorder->patience = trial.context().patience();
        Trial::engine().subscribeDirect(ticket, trial.name(), false, true, true, listener);
    }
    Desk(Desk const&) = delete;
    Desk& operator=(Desk const&) = delete;
    // Counts are plain: the listener may go when no event can be on its way to it.
    ~Desk() { ZANEngineProxy::uninitialize(); }

    ZANGMLAdapter& adapter() { return listener->getAdapter(); }

    void mark(long number) {
        listener->setLastConsumedAppMessageToCounterPartyId(trial.name(), static_cast<int>(number));
    }

    /// The ids of the orders that came again, as `a b c`.
    std::string again(std::string const& prefix) { return orders(prefix, "Y"); }
    std::string live(std::string const& prefix) { return orders(prefix, ""); }

    /// All of them, or those with this PossResend.
    std::string orders(std::string const& prefix, char const* possResend = nullptr) {
        std::string text;
        for (SeenEvent const& each : recorder->events()) {
            std::string const id = each.field(11);
            bool const isMeant = !possResend || each.field(97) == possResend;
            if (each.isType("D") && id.starts_with(prefix) && isMeant) {
                text += (text.empty() ? "" : " ") + id.substr(prefix.size());
            }
        }
        return text;
    }

    Trial& trial;
    DutifulRecorder* recorder;
    Guaranteed listener;
};

/// Sends three orders and waits until they have come to the desk; their numbers.
std::vector<long> sendThree(Trial& trial, Desk& desk, std::string const& prefix) {
    std::vector<long> numbers;
    for (char const* const name : {"one", "two", "three"}) {
        numbers.push_back(trial.send(prefix + name));
    }
    EXPECT_TRUE(trial.waitForOrder(*desk.recorder, prefix + "three", numbers.back()));
    return numbers;
}

void getEventsLikeOthers(Trial& trial) {
    trial.connect();
    Desk desk(trial);
    std::string const prefix = trial.newId();
    sendThree(trial, desk, prefix);
    EXPECT_EQ(desk.live(prefix), "one two three");
    EXPECT_EQ(desk.again(prefix), "");
    Trial::engine().unsubscribeDirect(Trial::me, trial.name(), false, true, false, desk.listener);
    EventRecorder& other = trial.listen();
    std::string const id = prefix + "four";
    ASSERT_TRUE(trial.waitForOrder(other, id, trial.send(id)));
    EXPECT_EQ(desk.live(prefix), "one two three");
}

void getAgainWhatLiesAboveTheMark(Trial& trial) {
    trial.connect();
    Desk desk(trial);
    std::string const prefix = trial.newId();
    std::vector<long> const numbers = sendThree(trial, desk, prefix);
    desk.mark(numbers[0]);
    EXPECT_EQ(desk.adapter().getLastConsumedMessage(trial.name(), toThem), numbers[0]);
    desk.listener->retrievePotentiallyLostMessages();
    EXPECT_EQ(desk.again(prefix), "two three");
    desk.mark(numbers[2]);
    desk.listener->retrievePotentiallyLostMessages();
    EXPECT_EQ(desk.again(prefix), "two three");
}

void findTheirMarksAfterARestart(Trial& trial) {
    std::string const prefix = trial.newId();
    std::vector<long> numbers;
    trial.connect();
    {
        Desk desk(trial);
        numbers = sendThree(trial, desk, prefix);
        desk.mark(numbers[1]);
        desk.adapter().flush();
    }
    trial.restart();
    Desk desk(trial);
    EXPECT_EQ(desk.adapter().getLastConsumedMessage(trial.name(), toThem), numbers[1]);
    desk.listener->retrievePotentiallyLostMessages();
    EXPECT_EQ(desk.again(prefix), "three");
}

void keepNewMessagesBehindTheOldOnes(Trial& trial) {
    trial.connect();
    Desk desk(trial);
    std::string const prefix = trial.newId();
    std::string last;
    long number = 0;
    for (int i = 0; i < 100; ++i) {
        last = prefix + "old" + std::to_string(i);
        number = trial.send(last);
    }
    ASSERT_TRUE(trial.waitForOrder(*desk.recorder, last, number));
    std::thread sender([&] {
        for (int i = 0; i < 50; ++i) {
            last = prefix + "new" + std::to_string(i);
            number = trial.send(last);
        }
    });
    desk.listener->retrievePotentiallyLostMessages();
    sender.join();
    ASSERT_TRUE(desk.recorder->waitFor([&](SeenEvent const& e) { return e.id == number; }));
    // One run of messages again, in order and without a live one among them.
    std::vector<SeenEvent> const events = desk.recorder->events();
    auto const isAgain = [](SeenEvent const& e) { return e.field(97) == "Y"; };
    auto const first = std::ranges::find_if(events, isAgain);
    auto const end = std::find_if_not(first, events.end(), isAgain);
    EXPECT_EQ(std::find_if(end, events.end(), isAgain), events.end());
    EXPECT_TRUE(std::ranges::is_sorted(first, end, {}, &SeenEvent::id));
    EXPECT_GE(end - first, 100);
}

void neverMoveAMarkBack(Trial& trial) {
    Desk desk(trial);
    desk.adapter().resetConsumedMessages(trial.name());
    EXPECT_EQ(desk.adapter().getLastConsumedMessage(trial.name(), toThem), -1);
    desk.mark(7);
    desk.mark(5);
    EXPECT_EQ(desk.adapter().getLastConsumedMessage(trial.name(), toThem), 7);
    EXPECT_EQ(desk.adapter().getLastConsumedMessage(
                  trial.name(), ZANGuaranteedEngineMessageListener::APP_MSG_FROM_COUNTERPARTY),
              -1)
        << "each stream has a mark of its own";
    desk.adapter().resetConsumedMessages(trial.name());
    EXPECT_EQ(desk.adapter().getLastConsumedMessage(trial.name(), toThem), -1);
}

void keepTheMarksOfEachNameApart(Trial& trial) {
    Desk alice(trial, UserTicket("alice", ""));
    Desk bob(trial, UserTicket("bob", ""));
    EXPECT_EQ(alice.adapter().getSubscriberName(), "alice");
    alice.adapter().resetConsumedMessages(trial.name());
    bob.adapter().resetConsumedMessages(trial.name());
    alice.mark(3);
    EXPECT_EQ(bob.adapter().getLastConsumedMessage(trial.name(), toThem), -1);
    Desk again(trial, UserTicket("alice", ""));
    EXPECT_EQ(again.adapter().getLastConsumedMessage(trial.name(), toThem), 3);
}

void narrowWhatTheyGetByAFilter(Trial& trial) {
    trial.connect();
    Desk desk(trial);
    std::string const prefix = trial.newId();
    std::string const filter = "stream = 3 AND tag(11) LIKE '%t%'";
    desk.listener->setSubscriptionFilter(filter);
    EXPECT_EQ(desk.listener->getSubscriptionFilter(), filter);
    sendThree(trial, desk, prefix);
    EXPECT_EQ(desk.live(prefix), "two three");
    desk.listener->retrievePotentiallyLostMessages();
    EXPECT_EQ(desk.again(prefix), "two three");
    desk.listener->resetSubscriptionFilter();
    EXPECT_EQ(desk.listener->getSubscriptionFilter(), "");
    desk.listener->retrievePotentiallyLostMessages();
    EXPECT_EQ(desk.again(prefix), "two three one two three");
}

void refuseAFilterThatIsNoExpression(Trial& trial) {
    Desk desk(trial);
    expectFailure<ZANInvalidMessageException>(
        [&] { desk.listener->setSubscriptionFilter("type ="); });
    EXPECT_EQ(desk.listener->getSubscriptionFilter(), "");
}

void refuseMarksThatMakeNoSense(Trial& trial) {
    Desk desk(trial);
    expectFailure<ZANConnectionUnknownException>(
        [&] { desk.listener->setLastConsumedResentMessageId("NO SUCH CONNECTION", 1); });
    expectFailure<ZANInvalidMessageException>([&] { desk.mark(-2); });
}

void askFromInsideAListener(Trial& trial) {
    trial.connect();
    Desk desk(trial);
    // The first event may be one before which there is nothing to be lost.
    int timesToAsk = 3;
    desk.recorder->onEvent([&] {
        if (timesToAsk-- > 0) {
            desk.listener->retrievePotentiallyLostMessages();
        }
    });
    trial.send(trial.newId());
    EXPECT_TRUE(desk.recorder->waitFor([](SeenEvent const& e) { return e.field(97) == "Y"; }));
    Trial::engine().destroyDirectSubscriber(desk.listener);
    ZANEngineProxy::uninitialize();
}

void getAMessageAgainOnWhichTheyFail(Trial& trial) {
    trial.connect();
    // Outlives the desk, whose listener may get reports to the end.
    std::atomic<int> failures{2};
    Desk desk(trial);
    std::string const prefix = trial.newId();
    desk.recorder->give([&, two = prefix + "two"](std::string const& id) {
        if (id == two && failures-- > 0) {
            throw std::runtime_error("not now");
        }
    });
    EventRecorder& other = trial.listen();
    std::vector<long> numbers;
    for (char const* const name : {"one", "two", "three"}) {
        numbers.push_back(trial.send(prefix + name));
    }
    EXPECT_TRUE(trial.waitForOrder(other, prefix + "three", numbers[2])) << "others go on";
    ASSERT_TRUE(trial.waitForOrder(*desk.recorder, prefix + "three", numbers[2]));
    EXPECT_EQ(desk.orders(prefix), "one two three") << "in their order, none left out";
    EXPECT_EQ(desk.again(prefix), "two") << "what it had before is marked";
    long const last = trial.send(prefix + "four");
    ASSERT_TRUE(trial.waitForOrder(*desk.recorder, prefix + "four", last));
    EXPECT_EQ(desk.orders(prefix), "one two three four");
}

void goOnBehindAMessageThatTheySkip(Trial& trial) {
    trial.connect();
    // Outlives the desk, whose listener may get reports to the end.
    std::atomic<int> attempts{0};
    Desk desk(trial);
    std::string const prefix = trial.newId();
    desk.recorder->give([&, two = prefix + "two"](std::string const& id) {
        if (id == two) {
            ++attempts;
            throw std::runtime_error("never");
        }
    });
    std::vector<long> numbers;
    for (char const* const name : {"one", "two", "three"}) {
        numbers.push_back(trial.send(prefix + name));
    }
    ASSERT_TRUE(trial.eventually([&] { return attempts >= 2; }));
    EXPECT_EQ(desk.orders(prefix), "one");
    desk.listener->skip(trial.name(), static_cast<int>(numbers[1]), toThem);
    EXPECT_TRUE(trial.waitForOrder(*desk.recorder, prefix + "three", numbers[2]));
    EXPECT_EQ(desk.orders(prefix), "one three");
    EXPECT_EQ(desk.adapter().getLastConsumedMessage(trial.name(), toThem), numbers[1]);
}

void stopBeforeAMessageOnWhichTheyFailAgain(Trial& trial) {
    trial.connect();
    // Outlives the desk, whose listener may get reports to the end.
    std::atomic<int> failures{1};
    Desk desk(trial);
    std::string const prefix = trial.newId();
    std::vector<long> const numbers = sendThree(trial, desk, prefix);
    desk.mark(numbers[0]);
    desk.recorder->give([&, two = prefix + "two"](std::string const& id) {
        if (id == two && failures-- > 0) {
            throw std::runtime_error("not now");
        }
    });
    desk.listener->retrievePotentiallyLostMessages();
    ASSERT_TRUE(desk.recorder->waitFor(
        [&](SeenEvent const& e) { return e.field(11) == prefix + "three" && e.field(97) == "Y"; }));
    EXPECT_EQ(desk.again(prefix), "two three");
}

// Marks the last message that it got by its event alone.
class Consumer : public EventRecorder {
public:
    void processEvent(counted_ptr<ZANEvent> event) override {
        EventRecorder::processEvent(event);
        if (guaranteed) {
            guaranteed->consumed(event);
        }
    }
    ZANGuaranteedEngineMessageListener* guaranteed = nullptr;
};

void markAMessageByItsEvent(Trial& trial) {
    trial.connect();
    auto* const consumer = new Consumer;
    consumer->patience = trial.context().patience();
    Guaranteed listener(
        new ZANGuaranteedEngineMessageListener(counted_ptr<IZANEventListener>(consumer)));
    consumer->guaranteed = listener.get();
    Trial::engine().subscribeDirect(Trial::me, trial.name(), false, true, false, listener);
    std::string const id = trial.newId();
    long const number = trial.send(id);
    ASSERT_TRUE(trial.waitForOrder(*consumer, id, number));
    EXPECT_TRUE(trial.eventually([&] {
        return listener->getAdapter().getLastConsumedMessage(trial.name(), toThem) >= number;
    }));
    Trial::engine().destroyDirectSubscriber(listener);
    ZANEngineProxy::uninitialize();
}

// Copies share an adapter, and each gives it back.
void mayBeCopied(Trial& trial) {
    Desk desk(trial);
    desk.listener->setSubscriptionFilter("stream = 3");
    auto copy = std::make_unique<ZANGuaranteedEngineMessageListener>(*desk.listener);
    {
        std::vector<ZANGuaranteedEngineMessageListener> many;
        for (int i = 0; i < 20; ++i) {
            many.push_back(*desk.listener);
            many.emplace_back(counted_ptr<IZANEventListener>(new EventRecorder));
        }
    }
    EXPECT_EQ(desk.listener->getSubscriptionFilter(), "stream = 3");
    EXPECT_EQ(copy->getSubscriptionFilter(), "stream = 3");
    desk.mark(7);
    EXPECT_EQ(copy->getAdapter().getLastConsumedMessage(trial.name(), toThem),
              desk.adapter().getLastConsumedMessage(trial.name(), toThem));
    trial.restart();
    Guaranteed fresh(
        new ZANGuaranteedEngineMessageListener(counted_ptr<IZANEventListener>(new EventRecorder)));
    fresh->setSubscriptionFilter("stream = 2");
    copy.reset(); // belongs to the adapter of before
    EXPECT_EQ(fresh->getSubscriptionFilter(), "stream = 2");
    EXPECT_EQ(desk.listener->getSubscriptionFilter(), "stream = 3");
}

void outliveTheAdapter(Trial& trial) {
    Desk desk(trial);
    ZANEngineProxy::uninitialize();
    EXPECT_THROW(desk.listener->retrievePotentiallyLostMessages(), ZANEngineException);
    EXPECT_EQ(desk.listener->getSubscriptionFilter(), "");
}

} // namespace

Promises guaranteedPromises() {
    using A = Ability;
    std::vector<A> const marks = {A::Connections, A::Direct, A::Guaranteed};
    std::vector<A> const sending = {A::Connections, A::Sending, A::Events, A::Direct,
                                    A::Guaranteed};
    std::vector<A> const filters = {A::Connections, A::Sending,    A::Events,
                                    A::Direct,      A::Guaranteed, A::Expressions};
    std::vector<A> const lasting = {A::Connections, A::Sending,    A::Events,
                                    A::Direct,      A::Guaranteed, A::Persistence};
    return {
        {"Guaranteed", "GetEventsLikeOthers", sending, getEventsLikeOthers},
        {"Guaranteed", "GetAgainWhatLiesAboveTheMark", sending, getAgainWhatLiesAboveTheMark},
        {"Guaranteed", "FindTheirMarksAfterARestart", lasting, findTheirMarksAfterARestart},
        {"Guaranteed", "KeepNewMessagesBehindTheOldOnes", sending, keepNewMessagesBehindTheOldOnes},
        {"Guaranteed", "NeverMoveAMarkBack", marks, neverMoveAMarkBack},
        {"Guaranteed", "KeepTheMarksOfEachNameApart", marks, keepTheMarksOfEachNameApart},
        {"Guaranteed", "NarrowWhatTheyGetByAFilter", filters, narrowWhatTheyGetByAFilter},
        {"Guaranteed", "RefuseAFilterThatIsNoExpression", filters, refuseAFilterThatIsNoExpression},
        {"Guaranteed", "RefuseMarksThatMakeNoSense", marks, refuseMarksThatMakeNoSense},
        {"Guaranteed", "AskFromInsideAListener", sending, askFromInsideAListener},
        {"Guaranteed", "OutliveTheAdapter", marks, outliveTheAdapter},
        {"Guaranteed", "GetAMessageAgainOnWhichTheyFail", sending, getAMessageAgainOnWhichTheyFail},
        {"Guaranteed", "GoOnBehindAMessageThatTheySkip", sending, goOnBehindAMessageThatTheySkip},
        {"Guaranteed", "StopBeforeAMessageOnWhichTheyFailAgain", sending,
         stopBeforeAMessageOnWhichTheyFailAgain},
        {"Guaranteed", "MarkAMessageByItsEvent", sending, markAMessageByItsEvent},
        {"Guaranteed", "MayBeCopied", filters, mayBeCopied},
    };
}

} // namespace zan::conformance
