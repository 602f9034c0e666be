#include "EmbeddedFixture.h"

#include "errors/ZANCannotConnectException.h"
#include "errors/ZANConnectionUnknownException.h"
#include "errors/ZANInvalidLogonException.h"
#include "errors/ZANInvalidMessageException.h"

#include <thread>

namespace {

using ConnectTest = EmbeddedTest;

std::string const unknownConnection =
    "kestrow.moravane.engine.ZANConnectionUnknownException: this engine has no connection \"X\"";

TEST_F(ConnectTest, LogsOn) {
    startAndConnect();
    EXPECT_TRUE(isConnected());
    EXPECT_FALSE(acceptor_->waitForLine("logon").empty());
    auto const state = engine().getConnectionState(me, "C");
    EXPECT_EQ(state->getState(), FLAG_LINK_ACTIVE | FLAG_SESSION_ACTIVE);
    EXPECT_EQ(state->getHeartbeats(), 10);
    EXPECT_EQ(state->getRemoteAddress(), "127.0.0.1:" + std::to_string(port_));
    EXPECT_EQ(state->getLocalAddress().find("127.0.0.1:"), 0u);
    EXPECT_EQ(state->getLastError(), "");
}

TEST_F(ConnectTest, DoesNothingWhenItIsLoggedOn) {
    startAndConnect();
    engine().connect(me, "C");
    EXPECT_TRUE(isConnected());
    engine().disconnect(me, "C", "");
    EXPECT_FALSE(acceptor_->waitForLine("logout").empty());
    int logons = 0;
    for (std::string const& line : acceptor_->lines()) {
        logons += line == "logon" ? 1 : 0;
    }
    EXPECT_EQ(logons, 1);
}

TEST_F(ConnectTest, AddsTheGivenFieldsToTheLogon) {
    startAcceptor();
    startEngine();
    counted_ptr<ZANFieldGroup> const fields(new ZANFieldGroup("A"));
    fields->setFieldValue(553, "user");
    fields->setFieldValue(554, "secret");
    engine().connect(me, "C", fields);
    std::string const logon = acceptor_->waitForLine("|35=A|");
    EXPECT_NE(logon.find("|553=user|"), std::string::npos) << logon;
    EXPECT_NE(logon.find("|554=secret|"), std::string::npos) << logon;
}

TEST_F(ConnectTest, RefusesLogonFieldsOfAnotherType) {
    startAcceptor();
    startEngine();
    EXPECT_EQ(failureOf<ZANInvalidMessageException>([&] {
                  engine().connect(me, "C", counted_ptr<ZANFieldGroup>(new ZANFieldGroup("D")));
              }),
              "kestrow.moravane.message.ZANInvalidMessageException: connection C: tag 35: the "
              "fields of a Logon cannot be of message type D");
    EXPECT_FALSE(isConnected());
}

TEST_F(ConnectTest, TellsTheWordsWithWhichTheLogonWasRefused) {
    startAcceptor({"--refuse-logon", "not before nine"});
    startEngine();
    EXPECT_EQ(failureOf<ZANInvalidLogonException>([&] { engine().connect(me, "C"); }),
              "kestrow.moravane.message.ZANInvalidLogonException: connection C: the counterparty "
              "refused the Logon: Rejected Logon Attempt: not before nine");
    EXPECT_FALSE(isConnected());
    EXPECT_EQ(engine().getConnectionState(me, "C")->getLastError(),
              "Rejected Logon Attempt: not before nine");
}

// Hours of one hour that begin two hours from now.
std::string hoursToCome() {
    std::int64_t const hour = 3'600'000;
    std::int64_t const now = infra::Time::now().getMillis();
    auto const timeOfDay = [](std::int64_t millis) {
        return infra::Time(millis).toString().substr(9, 8);
    };
    return "StartTime=" + timeOfDay(now + 2 * hour) + "\nEndTime=" + timeOfDay(now + 3 * hour) +
           "\n";
}

TEST_F(ConnectTest, TellsAtOnceWhenTheSessionOpensOutsideItsHours) {
    startAcceptor();
    std::string text = sessionText();
    std::string const always = "StartTime=00:00:00\nEndTime=00:00:00\n";
    text.replace(text.find(always), always.size(), hoursToCome());
    ZANEngineProxy::initialize(Url("embedded:" + writeSessionFile(text)));
    counted_ptr<ZANFieldGroup> const fields(new ZANFieldGroup("A"));
    fields->setFieldValue(34, 7L);
    auto const before = Clock::now();
    std::string const failure =
        failureOf<ZANCannotConnectException>([&] { engine().connect(me, "C", fields); });
    EXPECT_LT(Clock::now() - before, std::chrono::seconds(2));
    EXPECT_EQ(failure.find("connection C: outside its hours (StartTime="), 0u) << failure;
    EXPECT_NE(failure.find("; it opens at 20"), std::string::npos) << failure;
    EXPECT_EQ("connection C: " + engine().getConnectionState(me, "C")->getLastError(), failure);
    EXPECT_EQ(table("id").size(), 1u); // the names of the columns alone
}

TEST_F(ConnectTest, GoesOnByItselfFromTheStartWhereTheSessionFileSaysSo) {
    startAcceptor();
    acceptor_.reset();
    startEngine("ConnectAtStart=Y\n");
    ASSERT_TRUE(
        eventually([] { return !engine().getConnectionState(me, "C")->getLastError().empty(); }));
    failureOf<ZANCannotConnectException>([] { engine().connect(me, "C"); });
    startAcceptor();
    EXPECT_TRUE(eventually(isConnected));
    engine().disconnect(me, "C", "enough");
    std::this_thread::sleep_for(std::chrono::milliseconds(1500));
    EXPECT_FALSE(isConnected());
}

TEST_F(ConnectTest, DoesNotBeginByItselfWhereTheUrlSaysSo) {
    startAcceptor();
    ZANEngineProxy::initialize(
        Url("embedded:" + writeSessionFile(sessionText("ConnectAtStart=Y\n")) + "?connect=no"));
    std::this_thread::sleep_for(std::chrono::milliseconds(500));
    EXPECT_FALSE(isConnected());
    engine().connect(me, "C");
    EXPECT_TRUE(isConnected());
}

TEST_F(ConnectTest, GoesOnByItselfAfterAResetWhereTheSessionFileSaysSo) {
    startAcceptor();
    acceptor_.reset();
    startEngine("ConnectAtStart=Y\n");
    engine().resetConnection(me, "C");
    startAcceptor();
    EXPECT_TRUE(eventually(isConnected));
    EXPECT_NE(acceptor_->waitForLine("|35=A|").find("|141=Y|"), std::string::npos);
}

TEST_F(ConnectTest, UsesNoNumberWhereNobodyListens) {
    startAcceptor();
    acceptor_.reset();
    startEngine();
    for (int attempt = 0; attempt < 3; ++attempt) {
        failureOf<ZANCannotConnectException>([] { engine().connect(me, "C"); });
    }
    startAcceptor();
    engine().connect(me, "C");
    EXPECT_NE(acceptor_->waitForLine("|35=A|").find("|34=1|"), std::string::npos);
}

TEST_F(ConnectTest, FailsAtOnceWhereNobodyListens) {
    startAcceptor();
    acceptor_.reset();
    startEngine();
    auto const before = Clock::now();
    std::string const failure =
        failureOf<ZANCannotConnectException>([&] { engine().connect(me, "C"); });
    EXPECT_LT(Clock::now() - before, std::chrono::seconds(2));
    EXPECT_NE(failure.find("connection C: "), std::string::npos) << failure;
    EXPECT_NE(failure.find("127.0.0.1:" + std::to_string(port_)), std::string::npos) << failure;
    EXPECT_NE(failure.find("Connection refused"), std::string::npos) << failure;
    EXPECT_TRUE(engine().getConnectionState(me, "C")->isStateActive(FLAG_UNREACHABLE));
}

TEST_F(ConnectTest, LeavesNothingBehindWhenItFailed) {
    startAcceptor();
    acceptor_.reset();
    startEngine();
    EXPECT_THROW(engine().connect(me, "C"), ZANCannotConnectException);
    startAcceptor();
    std::this_thread::sleep_for(std::chrono::milliseconds(1500));
    EXPECT_FALSE(isConnected());
    engine().connect(me, "C");
    EXPECT_TRUE(isConnected());
}

TEST_F(ConnectTest, WaitsNoLongerThanItsTimeoutForAnAnswer) {
    startAcceptor();
    acceptor_->sendSignal(SIGSTOP);
    startEngine();
    auto const before = Clock::now();
    EXPECT_THROW(engine().connect(me, "C"), ZANCannotConnectException);
    EXPECT_LT(Clock::now() - before, std::chrono::seconds(4));
    acceptor_->sendSignal(SIGCONT);
}

TEST_F(ConnectTest, IsEndedByADisconnect) {
    startAcceptor();
    acceptor_->sendSignal(SIGSTOP);
    startEngine("LogoutTimeout=1\n");
    std::thread connecting([&] {
        EXPECT_EQ(failureOf<ZANCannotConnectException>([&] { engine().connect(me, "C"); }),
                  "connection C: disconnected by the application");
    });
    EXPECT_TRUE(eventually([&] { return engine().getConnectionState(me, "C")->isLinkActive(); }));
    auto const before = Clock::now();
    engine().disconnect(me, "C", "");
    connecting.join();
    EXPECT_LT(Clock::now() - before, std::chrono::milliseconds(2500));
    acceptor_->sendSignal(SIGCONT);
}

TEST_F(ConnectTest, ServesSeveralThreadsThatConnectAtOnce) {
    startAcceptor();
    startEngine();
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            engine().connect(me, "C");
            EXPECT_TRUE(isConnected());
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

TEST_F(ConnectTest, LogsOutWithTheReasonThatIsGiven) {
    startAndConnect();
    engine().disconnect(me, "C", "closing time");
    EXPECT_FALSE(isConnected());
    std::string const logout = acceptor_->waitForLine("|35=5|");
    EXPECT_NE(logout.find("|58=closing time|"), std::string::npos) << logout;
    EXPECT_EQ(engine().getConnectionState(me, "C")->getState(),
              FLAG_LOGGED_OUT | FLAG_DISCONNECTED);
}

TEST_F(ConnectTest, StaysLoggedOutAfterADisconnect) {
    startAndConnect();
    engine().disconnect(me, "C", "");
    std::this_thread::sleep_for(std::chrono::milliseconds(1500));
    EXPECT_FALSE(isConnected());
}

TEST_F(ConnectTest, TellsThatAPingWasNotAnswered) {
    startAndConnect({"--mute"});
    auto const before = Clock::now();
    EXPECT_FALSE(engine().pingConnection(me, "C", 300));
    EXPECT_GE(Clock::now() - before, std::chrono::milliseconds(300));
    EXPECT_LT(Clock::now() - before, std::chrono::milliseconds(1300));
}

TEST_F(ConnectTest, KnowsItsConnectionsByName) {
    startAcceptor();
    startEngine(sessionText().replace(0, 27, "[SESSION]\nSessionQualifier=2\n"));
    std::vector<std::string> names{"before"};
    engine().getConnectionNameList(me, names);
    EXPECT_EQ(names, (std::vector<std::string>{"before", "C", "US->THEM"}));
}

TEST_F(ConnectTest, ShowsItsSettingsWithoutSecrets) {
    startAcceptor();
    startEngine("MySQLStorePassword=hidden\n");
    counted_ptr<ZANFieldGroup> const fields(new ZANFieldGroup);
    fields->setFieldValue(553, "user");
    fields->setFieldValue(554, "hidden");
    fields->setFieldValue(925, "hidden");
    fields->setFieldValue(96, "hidden");
    engine().connect(me, "C", fields);
    std::string const properties = "\n" + engine().getConnectionProperties(me, "C");
    for (char const* line : {"\nConnectionName=C\n", "\nSenderCompID=US\n", "\nLogonTimeout=3\n",
                             "\nMySQLStorePassword=***\n", "\nLogon.553=user\n",
                             "\nLogon.554=***\n", "\nLogon.925=***\n", "\nLogon.96=***\n"}) {
        EXPECT_NE(properties.find(line), std::string::npos) << line << properties;
    }
    EXPECT_EQ(properties.find("hidden"), std::string::npos) << properties;
}

} // namespace
