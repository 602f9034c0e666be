// Names, states, and what connect and disconnect do to them.
#include "conformance/Trial.h"

#include "infra/Time.h"

#include <algorithm>
#include <sstream>

namespace zan::conformance {

namespace {

counted_ptr<ZANConnectionState> stateOf(Trial const& trial) {
    return Trial::engine().getConnectionState(Trial::me, trial.name());
}

void haveNames(Trial& trial) {
    std::vector<std::string> names{"before"};
    Trial::engine().getConnectionNameList(Trial::me, names);
    ASSERT_GE(names.size(), 2u) << "an adapter has at least one connection";
    EXPECT_EQ(names.front(), "before") << "names are appended";
    EXPECT_NE(std::ranges::find(names, trial.name()), names.end());
    std::vector<std::string> again{"before"};
    Trial::engine().getConnectionNameList(Trial::me, again);
    EXPECT_EQ(names, again);
}

void areNotConnectedAtFirst(Trial& trial) {
    EXPECT_FALSE(trial.isConnected());
    EXPECT_FALSE(stateOf(trial)->isSessionActive());
}

void logOn(Trial& trial) {
    trial.connect();
    EXPECT_TRUE(trial.isConnected());
    EXPECT_TRUE(stateOf(trial)->isLinkActive());
    EXPECT_TRUE(stateOf(trial)->isSessionActive());
    EXPECT_FALSE(stateOf(trial)->hasDisconnected());
}

void logOnWithoutFields(Trial& trial) {
    Trial::engine().connect(Trial::me, trial.name(), counted_ptr<ZANFieldGroup>());
    EXPECT_TRUE(trial.isConnected());
}

void stayLoggedOn(Trial& trial) {
    trial.connect();
    trial.connect();
    EXPECT_TRUE(trial.isConnected());
}

void logOut(Trial& trial) {
    trial.connect();
    trial.disconnect();
    EXPECT_FALSE(trial.isConnected());
    EXPECT_FALSE(stateOf(trial)->isSessionActive());
    EXPECT_TRUE(stateOf(trial)->hasDisconnected());
}

void takeADisconnectWhenNotConnected(Trial& trial) {
    trial.disconnect();
    EXPECT_FALSE(trial.isConnected());
}

void logOnAgain(Trial& trial) {
    for (int i = 0; i < 3; ++i) {
        trial.connect();
        EXPECT_TRUE(trial.isConnected());
        trial.disconnect();
        EXPECT_FALSE(trial.isConnected());
    }
}

void giveARecordOfTheCallersOwn(Trial& trial) {
    auto const one = stateOf(trial);
    auto const other = stateOf(trial);
    ASSERT_TRUE(one);
    EXPECT_NE(one.get(), other.get());
    EXPECT_EQ(one.use_count(), 1u);
    one->setState(FLAG_ON_HOLD);
    EXPECT_FALSE(stateOf(trial)->isOnHold());
}

void showTheirProperties(Trial& trial) {
    std::string const text = Trial::engine().getConnectionProperties(Trial::me, trial.name());
    EXPECT_FALSE(text.empty());
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        EXPECT_NE(line.find('='), std::string::npos) << line;
    }
}

void tellTheTime(Trial&) {
    auto const now = static_cast<double>(infra::Time::now().getMillis());
    EXPECT_NEAR(static_cast<double>(Trial::engine().getMillisTime(Trial::me)), now, 60000);
}

} // namespace

Promises connectionPromises() {
    using A = Ability;
    return {
        {"Connections", "HaveNames", {A::Connections}, haveNames},
        {"Connections", "AreNotConnectedAtFirst", {A::Connections}, areNotConnectedAtFirst},
        {"Connections", "LogOn", {A::Connections}, logOn},
        {"Connections", "LogOnWithoutFields", {A::Connections}, logOnWithoutFields},
        {"Connections", "StayLoggedOn", {A::Connections}, stayLoggedOn},
        {"Connections", "LogOut", {A::Connections}, logOut},
        {"Connections",
         "TakeADisconnectWhenNotConnected",
         {A::Connections},
         takeADisconnectWhenNotConnected},
        {"Connections", "LogOnAgain", {A::Connections}, logOnAgain},
        {"Connections", "GiveARecordOfTheCallersOwn", {A::Connections}, giveARecordOfTheCallersOwn},
        {"Connections",
         "ShowTheirProperties",
         {A::Connections, A::Properties},
         showTheirProperties},
        {"Clock", "TellsTheTime", {A::Clock}, tellTheTime},
    };
}

} // namespace zan::conformance
