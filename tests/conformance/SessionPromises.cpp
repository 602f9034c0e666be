// Sessions with sequence numbers, whoever the counterparty is.
#include "conformance/Trial.h"
#include "errors/ZANInvalidMessageException.h"
#include "infra/Time.h"

#include <chrono>

namespace zan::conformance {

namespace {

void answerPings(Trial& trial) {
    trial.connect();
    EXPECT_TRUE(Trial::engine().pingConnection(Trial::me, trial.name(), 10000));
}

void answerNoPingWhenLoggedOut(Trial& trial) {
    auto const before = std::chrono::steady_clock::now();
    EXPECT_FALSE(Trial::engine().pingConnection(Trial::me, trial.name(), 20000));
    EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::seconds(15));
}

void mayBeResetWhileLoggedOn(Trial& trial) {
    EventRecorder& recorder = trial.listen();
    trial.connect();
    long const before = trial.send(trial.newId());
    Trial::engine().resetConnection(Trial::me, trial.name());
    EXPECT_TRUE(Trial::engine().isConnected(Trial::me, trial.name()));
    std::string const id = trial.newId();
    long const after = trial.send(id);
    EXPECT_GT(after, before) << "a number is never used twice";
    EXPECT_TRUE(trial.waitForOrder(recorder, id, after));
}

void mayBeResetWhileLoggedOut(Trial& trial) {
    trial.connect();
    trial.disconnect();
    Trial::engine().resetConnection(Trial::me, trial.name());
    EXPECT_FALSE(Trial::engine().isConnected(Trial::me, trial.name()));
    trial.connect();
    EXPECT_TRUE(Trial::engine().isConnected(Trial::me, trial.name()));
}

void showAddressesAndHeartbeats(Trial& trial) {
    trial.connect();
    auto const state = Trial::engine().getConnectionState(Trial::me, trial.name());
    EXPECT_GT(state->getHeartbeats(), 0);
    EXPECT_FALSE(state->getLocalAddress().empty());
    EXPECT_FALSE(state->getRemoteAddress().empty());
    EXPECT_EQ(state->getLastError(), "");
    EXPECT_NEAR(state->getTimeLastStateChange(),
                static_cast<double>(infra::Time::now().getMillis()), 120000);
}

void refuseLogonFieldsOfAnotherType(Trial& trial) {
    expectFailure<ZANInvalidMessageException>(
        [&] {
            Trial::engine().connect(
                Trial::me, trial.name(),
                counted_ptr<ZANFieldGroup>(new ZANFieldGroup(std::string("D"))));
        },
        "35");
    EXPECT_FALSE(Trial::engine().isConnected(Trial::me, trial.name()));
}

void maskSecretsOfTheLogon(Trial& trial) {
    counted_ptr<ZANFieldGroup> const fields(new ZANFieldGroup(std::string("A")));
    fields->setFieldValue(554, "kept-to-myself");
    Trial::engine().connect(Trial::me, trial.name(), fields);
    EXPECT_EQ(
        Trial::engine().getConnectionProperties(Trial::me, trial.name()).find("kept-to-myself"),
        std::string::npos);
}

void deliverLogonAndLogoutOfBothSides(Trial& trial) {
    EventRecorder& recorder = trial.listen(ZANEngineDefs::ADMIN_EVENT_TYPE);
    trial.connect();
    trial.disconnect();
    for (char const* const type : {"A", "5"}) {
        EXPECT_TRUE(recorder.waitFor([&](SeenEvent const& e) { return e.isType(type); }, 2))
            << type;
    }
}

} // namespace

Promises sessionPromises() {
    using A = Ability;
    std::vector<A> const sessions = {A::Connections, A::Sessions};
    std::vector<A> const sending = {A::Connections, A::Sending, A::Events, A::Sessions};
    return {
        {"Sessions", "AnswerPings", sessions, answerPings},
        {"Sessions", "AnswerNoPingWhenLoggedOut", sessions, answerNoPingWhenLoggedOut},
        {"Sessions", "MayBeResetWhileLoggedOn", sending, mayBeResetWhileLoggedOn},
        {"Sessions", "MayBeResetWhileLoggedOut", sessions, mayBeResetWhileLoggedOut},
        {"Sessions", "ShowAddressesAndHeartbeats", sessions, showAddressesAndHeartbeats},
        {"Sessions", "RefuseLogonFieldsOfAnotherType", sessions, refuseLogonFieldsOfAnotherType},
        {"Sessions",
         "MaskSecretsOfTheLogon",
         {A::Connections, A::Sessions, A::Properties},
         maskSecretsOfTheLogon},
        {"Sessions",
         "DeliverLogonAndLogoutOfBothSides",
         {A::Connections, A::Sessions, A::Events},
         deliverLogonAndLogoutOfBothSides},
    };
}

} // namespace zan::conformance
