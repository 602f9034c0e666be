#include "server/sessions/RawPair.h"

#include <gtest/gtest.h>

#include <thread>

namespace {

using namespace zan::server;
using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

int closedPort() {
    return RawPeer().port();
}

TEST(FixSessionFaults, NamesAddressAndReasonWhenNobodyListens) {
    SessionRecorder ours;
    int const port = closedPort();
    auto const us = FixSession::initiator(settingsFor("US", "THEM", port), ours);
    us->start({});
    ASSERT_TRUE(ours.waitFor("! unreachable"));
    EXPECT_EQ(ours.lines().front(), "! unreachable cannot connect to 127.0.0.1:" +
                                        std::to_string(port) + ": Connection refused");
    EXPECT_EQ(us->nextSenderNumber(), 1);
}

TEST(FixSessionFaults, TriesAgainAfterTheReconnectInterval) {
    SessionRecorder ours;
    auto const us = FixSession::initiator(settingsFor("US", "THEM", closedPort()), ours);
    us->start({});
    EXPECT_TRUE(ours.waitFor("! unreachable", 2, 3s));
    us->stop();
    std::size_t const attempts = ours.lines().size();
    EXPECT_FALSE(ours.waitFor("! unreachable", attempts + 1, 1500ms));
}

TEST(FixSessionFaults, TriesTheFurtherHostsInTurn) {
    RawPeer peer;
    SessionRecorder ours;
    FixSessionSettings const settings = settingsFor(
        "US", "THEM", closedPort(),
        {{"SocketConnectHost1", "127.0.0.1"}, {"SocketConnectPort1", std::to_string(peer.port())}});
    auto const us = FixSession::initiator(settings, ours);
    us->start({});
    EXPECT_TRUE(peer.logOn());
    EXPECT_TRUE(ours.waitFor("on"));
}

TEST(FixSessionFaults, NamesAHostThatDoesNotExist) {
    SessionRecorder ours;
    FixSessionSettings settings = settingsFor("US", "THEM", 1);
    settings.keys.emplace_back("SocketConnectHost", "no-such-host.invalid");
    auto const us = FixSession::initiator(settings, ours);
    us->start({});
    ASSERT_TRUE(ours.waitFor("! unreachable", 1, 15s));
    EXPECT_NE(ours.lines().front().find("no-such-host.invalid:1"), std::string::npos);
}

TEST(FixSessionFaults, RefusesASecondSessionWithTheSameId) {
    SessionRecorder ours;
    auto us = FixSession::initiator(settingsFor("US", "THEM", 1), ours);
    try {
        FixSession::initiator(settingsFor("US", "THEM", 2), ours);
        FAIL() << "made twice";
    } catch (std::runtime_error const& error) {
        EXPECT_STREQ(error.what(), "the session FIX.4.4:US->THEM is already live in this process");
    }
    us.reset();
    EXPECT_NO_THROW(FixSession::initiator(settingsFor("US", "THEM", 2), ours));
}

TEST(FixSessionFaults, NamesTheKeyThatIsMissing) {
    for (std::string const key : {"BeginString", "SenderCompID", "TargetCompID", "HeartBtInt",
                                  "SocketConnectHost", "SocketConnectPort"}) {
        SessionRecorder ours;
        FixSessionSettings settings = settingsFor("US", "THEM", 1);
        std::erase_if(settings.keys, [&](auto const& each) { return each.first == key; });
        try {
            FixSession::initiator(settings, ours);
            ADD_FAILURE() << "made without " << key;
        } catch (std::runtime_error const& error) {
            EXPECT_NE(std::string(error.what()).find(key), std::string::npos) << error.what();
        }
    }
}

TEST(FixSessionFaults, NamesTheKeyWhoseValueIsBad) {
    for (std::string const key :
         {"SocketConnectPort", "ReconnectInterval", "LogonTimeout", "SocketSendBufferSize"}) {
        SessionRecorder ours;
        try {
            FixSession::initiator(settingsFor("US", "THEM", 1, {{key, "soon"}}), ours);
            ADD_FAILURE() << "made with a bad " << key;
        } catch (std::runtime_error const& error) {
            EXPECT_NE(std::string(error.what()).find(key + " is \"soon\""), std::string::npos)
                << error.what();
        }
    }
}

TEST(FixSessionFaults, HandsOnTheWordsOfACounterpartyThatRefusesTheLogon) {
    RawPair pair;
    pair.us->start({});
    ASSERT_TRUE(pair.peer.accept());
    ASSERT_FALSE(pair.peer.waitFor("A").empty());
    pair.peer.send("5", "58=wrong password|");
    ASSERT_TRUE(pair.ours.waitFor("down"));
    EXPECT_EQ(pair.ours.linesWith("|35=5|").front().find("< "), 0u);
    EXPECT_FALSE(pair.ours.linesWith("|58=wrong password|").empty());
    EXPECT_TRUE(pair.ours.linesWith("on").empty());
}

TEST(FixSessionFaults, GivesUpALogonThatIsNotAnswered) {
    RawPair pair(Keys{{"LogonTimeout", "1"}});
    pair.us->start({});
    ASSERT_TRUE(pair.peer.accept());
    EXPECT_TRUE(pair.ours.waitFor("! timedOut Timed out waiting for logon response", 1, 4s))
        << pair.ours.all();
    EXPECT_TRUE(pair.ours.waitFor("down"));
}

TEST(FixSessionFaults, GivesUpALogoutThatIsNotAnswered) {
    RawPair pair(Keys{{"LogoutTimeout", "1"}});
    ASSERT_TRUE(pair.logOn());
    auto const start = Clock::now();
    pair.us->requestLogout("bye");
    EXPECT_TRUE(pair.ours.waitFor("! timedOut", 1, 4s)) << pair.ours.all();
    EXPECT_TRUE(pair.ours.waitFor("down"));
    EXPECT_LT(Clock::now() - start, 3s);
}

TEST(FixSessionFaults, NoticesThatTheHeartbeatsStopped) {
    RawPair pair(Keys{{"HeartBtInt", "1"}});
    ASSERT_TRUE(pair.logOn());
    EXPECT_TRUE(pair.ours.waitFor("! timedOut Timed out waiting for heartbeat", 1, 6s))
        << pair.ours.all();
    EXPECT_TRUE(pair.ours.waitFor("down"));
}

TEST(FixSessionFaults, NoticesAtOnceThatTheCounterpartyIsGoneAndComesBack) {
    RawPair pair;
    ASSERT_TRUE(pair.logOn());
    auto const start = Clock::now();
    pair.peer.drop();
    ASSERT_TRUE(pair.ours.waitFor("down"));
    EXPECT_LT(Clock::now() - start, 1s);
    EXPECT_EQ(pair.ours.linesWith("! ").front(), "! session the counterparty closed the link");
    EXPECT_TRUE(pair.peer.logOn());
    EXPECT_TRUE(pair.ours.waitFor("on", 2));
}

TEST(FixSessionFaults, TellsThatASequenceNumberIsTooLow) {
    RawPair pair;
    ASSERT_TRUE(pair.logOn());
    pair.peer.number = 1;
    pair.peer.send("B", "148=again|");
    EXPECT_TRUE(pair.ours.waitFor("! session MsgSeqNum too low, expecting 2 but received 1"))
        << pair.ours.all();
    EXPECT_TRUE(pair.ours.waitFor("down"));
}

TEST(FixSessionFaults, AsksForWhatIsMissingAndReportsEachMessageOnceInOrder) {
    RawPair pair;
    ASSERT_TRUE(pair.logOn());
    std::string const second = pair.peer.framed("B", "43=Y|122=20260101-00:00:00|148=2nd|");
    std::string const third = pair.peer.framed("B", "148=3rd|");
    pair.peer.sendBytes(third);
    ASSERT_FALSE(pair.peer.waitFor("2").empty());
    pair.peer.sendBytes(second);
    pair.peer.number = 3;
    pair.peer.send("B", "43=Y|122=20260101-00:00:00|148=3rd|");
    pair.peer.send("B", "148=4th|");
    ASSERT_TRUE(pair.ours.waitFor("|148=4th|"));
    std::string titles;
    for (std::string const& line : pair.ours.linesWith("< 8=FIX.4.4"))
        if (std::size_t const at = line.find("|148="); at != std::string::npos)
            titles += line.substr(at + 5, 3) + " ";
    EXPECT_EQ(titles, "2nd 3rd 4th ");
}

TEST(FixSessionFaults, SendsTheBodyOfAMessageAgainAsItWas) {
    RawPair pair;
    ASSERT_TRUE(pair.logOn());
    FixFields const body = {{97, "Y"},      {55, "IBM"}, {11, "1"},  {453, "2"}, {448, "A"},
                            {447, "D"},     {802, "2"},  {523, "x"}, {803, "1"}, {523, "y"},
                            {803, "2"},     {448, "B"},  {447, "D"}, {452, "7"}, {95, "3"},
                            {96, "a\x01z"}, {5001, "p"}, {5001, "q"}};
    sendOne(*pair.us, "D", body);
    std::string const sent = pair.peer.waitFor("D");
    std::string const text = "|97=Y|55=IBM|11=1|453=2|448=A|447=D|802=2|523=x|803=1|523=y|803=2|"
                             "448=B|447=D|452=7|95=3|96=a|z|5001=p|5001=q|10=";
    ASSERT_NE(sent.find(text), std::string::npos) << sent;
    pair.peer.send("2", "7=1|16=0|");
    std::string const again = pair.peer.waitFor("D");
    EXPECT_NE(again.find("|34=2|"), std::string::npos) << again;
    EXPECT_NE(again.find("|43=Y|"), std::string::npos) << again;
    EXPECT_NE(again.find("|122=" + sent.substr(sent.find("|52=") + 4, 21) + "|"), std::string::npos)
        << again;
    EXPECT_NE(again.find("|97=Y|122="), std::string::npos) << again;
    EXPECT_NE(again.find(text.substr(5)), std::string::npos) << again;
}

TEST(FixSessionFaults, TakesUnknownTypesAndUnknownAndRepeatedFieldsUnharmed) {
    RawPair pair;
    ASSERT_TRUE(pair.logOn());
    pair.peer.send("XYZ", "20001=a|20002=b|20001=c|");
    ASSERT_TRUE(pair.ours.waitFor("|35=XYZ|"));
    EXPECT_NE(pair.ours.linesWith("< ").back().find("|20001=a|20002=b|20001=c|10="),
              std::string::npos);
}

TEST(FixSessionFaults, TakesALogonWithAGroup) {
    RawPair pair;
    pair.us->start({});
    ASSERT_TRUE(pair.peer.accept());
    ASSERT_FALSE(pair.peer.waitFor("A").empty());
    pair.peer.send("A", "98=0|108=5|384=2|372=D|385=R|372=8|385=S|");
    EXPECT_TRUE(pair.ours.waitFor("on")) << pair.ours.all();
}

class MalformedFields : public testing::TestWithParam<std::string> {};

TEST_P(MalformedFields, AreRejectedAndTheSessionGoesOn) {
    RawPair pair;
    ASSERT_TRUE(pair.logOn());
    pair.peer.send("B", GetParam());
    EXPECT_NE(pair.peer.waitFor("3").find("|45=2|"), std::string::npos) << pair.ours.all();
    pair.peer.send("B", "148=fine|");
    EXPECT_TRUE(pair.ours.waitFor("|148=fine|"));
    EXPECT_EQ(pair.ours.linesWith("< ").size(), 2u) << pair.ours.all();
}

INSTANTIATE_TEST_SUITE_P(Bodies, MalformedFields,
                         testing::Values("148|", "148=|", "x=1|", "=1|", "-5=1|",
                                         "148=a|95=1|96=bcd|"));

TEST(FixSessionFaults, DropsAGarbledMessageAndGetsItAgain) {
    RawPair pair;
    ASSERT_TRUE(pair.logOn());
    std::string garbled = pair.peer.framed("B", "148=lost|");
    garbled[garbled.size() - 2] = garbled[garbled.size() - 2] == '0' ? '1' : '0';
    pair.peer.sendBytes(garbled);
    EXPECT_TRUE(pair.ours.waitFor("! badBytes"));
    pair.peer.send("B", "148=next|");
    EXPECT_NE(pair.peer.waitFor("2").find("|7=2|"), std::string::npos);
    EXPECT_TRUE(pair.us->isLoggedOn());
}

TEST(FixSessionFaults, ClosesALinkThatBringsNothingButGarbage) {
    RawPair pair;
    ASSERT_TRUE(pair.logOn());
    for (int i = 0; i < 200; ++i)
        pair.peer.sendBytes("8=FIX.4.4\x01"
                            "9=x\x01");
    EXPECT_TRUE(pair.ours.waitFor("down")) << pair.ours.all();
}

TEST(FixSessionFaults, ClosesALinkWhoseFirstBytesAreNoFix) {
    RawPair pair;
    pair.us->start({});
    ASSERT_TRUE(pair.peer.accept());
    pair.peer.sendBytes("HTTP/1.1 400 Bad Request\r\n\r\n");
    EXPECT_TRUE(pair.ours.waitFor("! badBytes"));
    EXPECT_TRUE(pair.ours.waitFor("down"));
}

TEST(FixSessionFaults, TellsHowMuchACounterpartyHasNotRead) {
    RawPair pair(Keys{{"SocketSendBufferSize", "4096"}});
    EXPECT_EQ(pair.us->unsentBytes(), 0u);
    pair.us->start({});
    ASSERT_TRUE(pair.peer.accept(4096));
    ASSERT_FALSE(pair.peer.waitFor("A").empty());
    pair.peer.send("A", "98=0|108=30|");
    ASSERT_TRUE(pair.ours.waitFor("on"));
    FixFields const body = {{148, std::string(1'000'000, 'x')}};
    ASSERT_EQ(sendOne(*pair.us, "B", body, 500ms), FixSendResult::sent);
    EXPECT_GT(pair.us->unsentBytes(), 0u);
    EXPECT_LT(pair.us->unsentBytes(), 1'001'000u);
    pair.us->stop();
    EXPECT_EQ(pair.us->unsentBytes(), 0u);
}

TEST(FixSessionFaults, IsNotBlockedByACounterpartyThatDoesNotRead) {
    RawPair pair(Keys{{"SocketSendBufferSize", "4096"}});
    pair.us->start({});
    ASSERT_TRUE(pair.peer.accept(4096));
    ASSERT_FALSE(pair.peer.waitFor("A").empty());
    pair.peer.send("A", "98=0|108=5|");
    ASSERT_TRUE(pair.ours.waitFor("on"));
    FixFields const body = {{148, std::string(100'000, 'x')}};
    FixSendResult result = FixSendResult::sent;
    for (int i = 0; i < 200 && result == FixSendResult::sent; ++i)
        result = sendOne(*pair.us, "B", body, 500ms);
    EXPECT_EQ(result, FixSendResult::peerTooSlow);
    int const number = pair.us->nextSenderNumber();
    auto const start = Clock::now();
    EXPECT_EQ(sendOne(*pair.us, "B", body, 100ms), FixSendResult::peerTooSlow);
    pair.us->stop();
    EXPECT_LT(Clock::now() - start, 2s);
    EXPECT_EQ(pair.us->nextSenderNumber(), number);
}

TEST(FixSessionFaults, GoesOnSendingWhenASlowCounterpartyReadsAgain) {
    RawPair pair;
    ASSERT_TRUE(pair.logOn());
    FixFields const body = {{148, std::string(100'000, 'x')}};
    std::thread reader([&pair] {
        std::this_thread::sleep_for(200ms);
        for (int i = 0; i < 100; ++i)
            EXPECT_FALSE(pair.peer.waitFor("B").empty());
    });
    for (int i = 0; i < 100; ++i)
        EXPECT_EQ(sendOne(*pair.us, "B", body, 5s), FixSendResult::sent);
    reader.join();
}

} // namespace
