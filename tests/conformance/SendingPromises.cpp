// What sending takes, answers and refuses.
#include "conformance/FixText.h"
#include "conformance/Trial.h"
#include "errors/ZANInvalidMessageException.h"
#include "errors/ZANNotConnectedException.h"

namespace zan::conformance {

namespace {

void returnsRisingNumbers(Trial& trial) {
    trial.connect();
    long last = 0;
    for (int i = 0; i < 20; ++i) {
        long const number = trial.send(trial.newId());
        EXPECT_GT(number, last);
        last = number;
    }
}

void goesOnCountingAfterAReconnect(Trial& trial) {
    trial.connect();
    long const before = trial.send(trial.newId());
    trial.disconnect();
    trial.connect();
    EXPECT_GT(trial.send(trial.newId()), before);
}

void takesFieldsBetweenSoh(Trial& trial) {
    trial.connect();
    EXPECT_GT(Trial::engine().sendMessage(Trial::me, trial.name(),
                                          wired(trial.order(trial.newId()) + "|")),
              0);
}

void takesModels(Trial& trial) {
    trial.connect();
    EXPECT_GT(Trial::engine().sendMessage(Trial::me, trial.name(), trial.orderModel(trial.newId())),
              0);
}

void needsASession(Trial& trial) {
    expectFailure<ZANNotConnectedException>([&] { trial.send(trial.newId()); });
    expectFailure<ZANNotConnectedException>([&] {
        Trial::engine().sendMessage(Trial::me, trial.name(), trial.orderModel(trial.newId()));
    });
    trial.connect();
    trial.disconnect();
    expectFailure<ZANNotConnectedException>([&] { trial.send(trial.newId()); });
}

void keepsNothingThatWasRefused(Trial& trial) {
    EventRecorder& recorder = trial.listen();
    std::string const early = trial.newId("early");
    EXPECT_THROW(trial.send(early), ZANNotConnectedException);
    trial.connect();
    std::string const late = trial.newId("late");
    ASSERT_TRUE(trial.waitForOrder(recorder, late, trial.send(late)));
    EXPECT_EQ(recorder.first([&](SeenEvent const& e) { return e.field(11) == early; }).id, 0);
}

void refusesTextThatIsNoMessage(Trial& trial) {
    trial.connect();
    for (char const* const text : {"", "35", "35=", "=D", "0=D", "x=D", "-1=D", "11=no type",
                                   "35=D|55", "35=D|55=", "35=D|Symbol=IBM", "35=D||55=IBM"}) {
        SCOPED_TRACE(text);
        expectFailure<ZANInvalidMessageException>(
            [&] { Trial::engine().sendMessage(Trial::me, trial.name(), text); });
    }
    EXPECT_GT(trial.send(trial.newId()), 0) << "a refusal ends nothing";
}

void refusesAMessageWithoutABody(Trial& trial) {
    trial.connect();
    for (auto const& message :
         {counted_ptr<ZANMessage>(), counted_ptr<ZANMessage>(new ZANMessage),
          counted_ptr<ZANMessage>(new ZANMessage(counted_ptr<ZANFieldGroup>(new ZANFieldGroup)))}) {
        expectFailure<ZANInvalidMessageException>(
            [&] { Trial::engine().sendMessage(Trial::me, trial.name(), message); });
    }
}

void leavesTheModelToTheCaller(Trial& trial) {
    EventRecorder& recorder = trial.listen();
    trial.connect();
    std::string const id = trial.newId();
    auto const message = trial.orderModel(id);
    message->getFieldGroup()->setFieldValue(58, "before");
    long const number = Trial::engine().sendMessage(Trial::me, trial.name(), message);
    message->getFieldGroup()->setFieldValue(58, "after");
    EXPECT_EQ(message.use_count(), 1u);
    EXPECT_FALSE(message->getFieldGroup()->isFieldPresent(16580));
    ASSERT_TRUE(trial.waitForOrder(recorder, id, number));
    EXPECT_EQ(recorder.first([&](SeenEvent const& e) { return e.id == number; }).field(58),
              "before");
}

void keepsTheKindsApart(Trial& trial) {
    trial.connect();
    expectFailure<ZANInvalidMessageException>(
        [&] { Trial::engine().sendMessage(Trial::me, trial.name(), "35=0"); }, "35");
    expectFailure<ZANInvalidMessageException>(
        [&] {
            Trial::engine().sendAdminMessage(Trial::me, trial.name(), trial.order(trial.newId()));
        },
        "35");
}

void keepsTheSessionsOwnMessagesToItself(Trial& trial) {
    trial.connect();
    for (char const* const type : {"A", "5", "4"}) {
        expectFailure<ZANInvalidMessageException>([&] {
            Trial::engine().sendAdminMessage(Trial::me, trial.name(), std::string("35=") + type);
        });
    }
    EXPECT_TRUE(Trial::engine().isConnected(Trial::me, trial.name()));
}

void adminNeedsASession(Trial& trial) {
    expectFailure<ZANNotConnectedException>(
        [&] { Trial::engine().sendAdminMessage(Trial::me, trial.name(), "35=0"); });
}

void adminReachesItsListeners(Trial& trial) {
    EventRecorder& recorder = trial.listen(ZANEngineDefs::ADMIN_EVENT_TYPE);
    trial.connect();
    std::string const word = trial.newId();
    long const number =
        Trial::engine().sendAdminMessage(Trial::me, trial.name(), "35=1|112=" + word);
    EXPECT_GT(number, 0);
    ASSERT_TRUE(recorder.waitFor([&](SeenEvent const& e) { return e.id == number; }));
    SeenEvent const seen = recorder.first([&](SeenEvent const& e) { return e.id == number; });
    EXPECT_EQ(seen.kind, SeenEvent::Kind::Admin);
    EXPECT_EQ(seen.field(112), word);
    for (SeenEvent const& each : recorder.events()) {
        EXPECT_EQ(each.kind, SeenEvent::Kind::Admin);
    }
}

void adminTakesModels(Trial& trial) {
    trial.connect();
    counted_ptr<ZANFieldGroup> const body(new ZANFieldGroup(std::string("0")));
    EXPECT_GT(Trial::engine().sendAdminMessage(Trial::me, trial.name(),
                                               counted_ptr<ZANMessage>(new ZANMessage(body))),
              0);
}

} // namespace

Promises sendingPromises() {
    using A = Ability;
    std::vector<A> const sending = {A::Connections, A::Sending};
    std::vector<A> const events = {A::Connections, A::Sending, A::Events};
    std::vector<A> const admin = {A::Connections, A::Admin};
    return {
        {"Sending", "ReturnsRisingNumbers", sending, returnsRisingNumbers},
        {"Sending", "GoesOnCountingAfterAReconnect", sending, goesOnCountingAfterAReconnect},
        {"Sending", "TakesFieldsBetweenSoh", sending, takesFieldsBetweenSoh},
        {"Sending", "TakesModels", sending, takesModels},
        {"Sending", "NeedsASession", sending, needsASession},
        {"Sending", "KeepsNothingThatWasRefused", events, keepsNothingThatWasRefused},
        {"Sending", "RefusesTextThatIsNoMessage", sending, refusesTextThatIsNoMessage},
        {"Sending", "RefusesAMessageWithoutABody", sending, refusesAMessageWithoutABody},
        {"Sending", "LeavesTheModelToTheCaller", events, leavesTheModelToTheCaller},
        {"Admin", "KeepsTheKindsApart", {A::Connections, A::Sending, A::Admin}, keepsTheKindsApart},
        {"Admin", "KeepsTheSessionsOwnMessagesToItself", admin,
         keepsTheSessionsOwnMessagesToItself},
        {"Admin", "NeedsASession", admin, adminNeedsASession},
        {"Admin",
         "ReachesItsListeners",
         {A::Connections, A::Admin, A::Events},
         adminReachesItsListeners},
        {"Admin", "TakesModels", admin, adminTakesModels},
    };
}

} // namespace zan::conformance
