#include "server/config/SessionFile.h"

#include "infra/WrongConfigurationException.h"
#include "server/config/SessionKeys.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>

namespace {

using zan::server::ConnectionSettings;
using zan::server::parseSessionText;
using zan::server::readSessionFile;

// Lines 1 to 8; what a test adds begins on line 9, inside the only session.
std::string const smallestSession = "[SESSION]\n"
                                    "ConnectionType=initiator\n"
                                    "BeginString=FIX.4.4\n"
                                    "SenderCompID=US\n"
                                    "TargetCompID=THEM\n"
                                    "StartTime=00:00:00\nEndTime=00:00:00\n"
                                    "HeartBtInt=30\n";
std::string const link = "SocketConnectHost=localhost\nSocketConnectPort=5001\n";

std::string errorOf(std::string const& text) {
    try {
        parseSessionText(text, "some.cfg");
    } catch (WrongConfigurationException const& e) {
        return e.getMessage();
    }
    return "no error";
}

std::string secondSession(std::string const& lines) {
    return smallestSession + link + smallestSession + link + lines;
}

TEST(SessionFile, NamesAConnectionByItsCompanyIds) {
    auto const connections = parseSessionText(smallestSession + link, "some.cfg");
    ASSERT_EQ(connections.size(), 1u);
    EXPECT_EQ(connections[0].name, "US->THEM");
    EXPECT_EQ(connections[0].sessionId, "FIX.4.4:US->THEM");
}

TEST(SessionFile, TakesTheNameThatIsGiven) {
    auto const connections =
        parseSessionText(smallestSession + link + "ConnectionName=BROKER\n", "some.cfg");
    EXPECT_EQ(connections[0].name, "BROKER");
}

TEST(SessionFile, KeepsTheOrderOfItsSessions) {
    auto const connections =
        parseSessionText(secondSession("ConnectionName=A\nSessionQualifier=2\n"), "some.cfg");
    ASSERT_EQ(connections.size(), 2u);
    EXPECT_EQ(connections[0].name, "US->THEM");
    EXPECT_EQ(connections[1].name, "A");
    EXPECT_EQ(connections[1].sessionId, "FIX.4.4:US->THEM:2");
}

TEST(SessionFile, TakesFromTheDefaultsWhatASessionDoesNotSet) {
    auto const connections = parseSessionText(smallestSession + "SocketConnectPort=7\n" +
                                                  "[DEFAULT]\n" + link + "LogonTimeout=3\n",
                                              "some.cfg");
    EXPECT_EQ(connections[0].valueOf("SocketConnectHost"), "localhost");
    EXPECT_EQ(connections[0].valueOf("SocketConnectPort"), "7");
    EXPECT_EQ(connections[0].logonTimeout, std::chrono::seconds(3));
}

TEST(SessionFile, WaitsTenSecondsForALogonUnlessItIsTold) {
    auto const connections = parseSessionText(smallestSession + link, "some.cfg");
    EXPECT_EQ(connections[0].logonTimeout, std::chrono::seconds(10));
}

TEST(SessionFile, ReadsKeysInAnyCaseAndBlanksAroundThem) {
    auto const connections = parseSessionText(
        smallestSession + link + "\t socketNODELAY = y \r\n# a comment\r\n\r\n", "some.cfg");
    EXPECT_EQ(connections[0].valueOf("SocketNodelay"), "Y");
}

TEST(SessionFile, KeepsEqualsSignsInAValue) {
    auto const connections =
        parseSessionText(smallestSession + link + "OdbcStoreUser=a=b\n", "some.cfg");
    EXPECT_EQ(connections[0].valueOf("OdbcStoreUser"), "a=b");
}

TEST(SessionFile, SkipsAByteOrderMark) {
    EXPECT_EQ(errorOf("\xEF\xBB\xBF" + smallestSession + link), "no error");
}

TEST(SessionFile, KnowsFurtherHostsToConnectTo) {
    EXPECT_EQ(errorOf(smallestSession + link + "SocketConnectHost1=b\nSocketConnectPort1=5002\n"),
              "no error");
}

struct Fault {
    char const* name;
    std::string text;
    char const* error;
};

class SessionFileFault : public testing::TestWithParam<Fault> {};

TEST_P(SessionFileFault, IsToldWithFileLineKeyAndWhatWouldBeRight) {
    EXPECT_EQ(errorOf(GetParam().text), GetParam().error);
}

std::string sessionWith(std::string const& lines) {
    return smallestSession + lines + link;
}

INSTANTIATE_TEST_SUITE_P(
    All, SessionFileFault,
    testing::Values(
        Fault{"Empty", "", "some.cfg:0: no [SESSION]: a file needs one for each connection"},
        Fault{"OnlyDefaults", "[DEFAULT]\n" + link,
              "some.cfg:3: no [SESSION]: a file needs one for each connection"},
        Fault{"BeforeSection", "HeartBtInt=30\n",
              "some.cfg:1: HeartBtInt: stands before the first section; [DEFAULT] or [SESSION] "
              "has to come first"},
        Fault{"UnknownSection", "[session]\n",
              "some.cfg:1: \"[session]\" is no section; [DEFAULT] or [SESSION] would be right"},
        Fault{"SecondDefaults", "[DEFAULT]\n\n[DEFAULT]\n",
              "some.cfg:3: [DEFAULT] stands a second time, after line 1"},
        Fault{"NoSetting", sessionWith("HeartBtInt\n"),
              "some.cfg:9: \"HeartBtInt\" is neither a section nor key=value"},
        Fault{"MisspelledKey", sessionWith("SocketConectHost=x\n"),
              "some.cfg:9: SocketConectHost: nobody knows this key; SocketConnectHost would be "
              "right"},
        Fault{"UnknownKey", sessionWith("Colour=red\n"),
              "some.cfg:9: Colour: nobody knows this key; the keys of QuickFIX, ConnectionName, "
              "Durability and LogonTimeout would be right"},
        Fault{"EmptyKey", sessionWith("=red\n"),
              "some.cfg:9: : nobody knows this key; the keys of QuickFIX, ConnectionName, "
              "Durability and LogonTimeout would be right"},
        Fault{"RepeatedKey", sessionWith("heartbtint=31\n"),
              "some.cfg:9: HeartBtInt: is set already on line 8"},
        Fault{"EmptyValue", sessionWith("SessionQualifier=\n"),
              "some.cfg:9: SessionQualifier=: a value is needed"},
        Fault{"Flag", sessionWith("ResetOnLogon=yes\n"),
              "some.cfg:9: ResetOnLogon=yes: Y or N would be right"},
        Fault{"Port", sessionWith("SocketAcceptPort=65536\n"),
              "some.cfg:9: SocketAcceptPort=65536: a port from 1 to 65535 would be right"},
        Fault{"NumberWithRest", sessionWith("ReconnectInterval=5s\n"),
              "some.cfg:9: ReconnectInterval=5s: a whole number, 1 or greater, would be right"},
        Fault{"NegativeNumber", sessionWith("SocketSendBufferSize=-1\n"),
              "some.cfg:9: SocketSendBufferSize=-1: a whole number, 0 or greater, would be right"},
        Fault{"HugeNumber", sessionWith("LogonTimeout=99999999999999999999\n"),
              "some.cfg:9: LogonTimeout=99999999999999999999: a whole number, 1 or greater, would "
              "be right"},
        Fault{"TimeOfDay", sessionWith("LogonTime=24:00:00\n"),
              "some.cfg:9: LogonTime=24:00:00: a time of the form HH:MM:SS would be right"},
        Fault{"Day", sessionWith("StartDay=someday\n"),
              "some.cfg:9: StartDay=someday: a day of the week, such as Monday or mo, would be "
              "right"},
        Fault{"Durability", sessionWith("Durability=high\n"),
              "some.cfg:9: Durability=high: normal or full would be right"},
        Fault{"Identifier", sessionWith("ConnectionName=a/b\n"),
              "some.cfg:9: ConnectionName=a/b: printable characters without '/' would be right"},
        Fault{"Version", "[SESSION]\nBeginString=4.4\n",
              "some.cfg:2: BeginString=4.4: FIX.4.0 to FIX.4.4 or FIXT.1.1 would be right"},
        Fault{"Acceptor", "[SESSION]\nConnectionType=acceptor\n",
              "some.cfg:2: ConnectionType=acceptor: only initiator is offered here: this engine "
              "accepts no connections"},
        Fault{"EncryptedLink", sessionWith("SSLProtocol=TLSv1_2\n"),
              "some.cfg:9: SSLProtocol=TLSv1_2: this engine opens no encrypted links; leave the "
              "key out and connect to the near end of an encrypting tunnel"},
        Fault{"MissingKey", "[DEFAULT]\n" + link + smallestSession + "[SESSION]\n",
              "some.cfg:12: ConnectionType: is missing, here and in [DEFAULT]; "
              "ConnectionType=initiator could stand here"},
        Fault{"MissingPartner", sessionWith("EndDay=fr\n"),
              "some.cfg:9: StartDay: is missing, and EndDay needs it"},
        Fault{"MissingPort", sessionWith("SocketConnectHost2=x\n"),
              "some.cfg:9: SocketConnectPort2: is missing, and SocketConnectHost2 needs it"},
        Fault{"MissingVersion",
              "[SESSION]\nConnectionType=initiator\nBeginString=FIXT.1.1\nSenderCompID=A\n"
              "TargetCompID=B\nStartTime=00:00:00\nEndTime=00:00:00\nHeartBtInt=1\n" +
                  link,
              "some.cfg:3: DefaultApplVerID: is missing, and BeginString=FIXT.1.1 needs it"},
        Fault{"ApplicationVersion", sessionWith("DefaultApplVerID=FIX.6.0\n"),
              "some.cfg:9: DefaultApplVerID=FIX.6.0: 2 to 10 or their names, FIX.4.0 to FIX.4.4, "
              "FIX.5.0, FIX.5.0SP1, FIX.5.0SP2 and FIX.Latest, would be right"},
        Fault{"MissingDictionary", sessionWith("DataDictionary=/no/such.xml\n"),
              "some.cfg:9: DataDictionary=/no/such.xml: cannot be read (No such file or "
              "directory); the path of a data dictionary would be right"},
        Fault{"SameSession", secondSession("ConnectionName=B\n"),
              "some.cfg:11: SenderCompID: the session \"FIX.4.4:US->THEM\" belongs to the "
              "[SESSION] on line 1 already; another company id or a SessionQualifier would be "
              "right"},
        Fault{"SameName", secondSession("SessionQualifier=B\n"),
              "some.cfg:11: ConnectionName: the name \"US->THEM\" belongs to the [SESSION] on "
              "line 1 already; a ConnectionName of its own would be right"}),
    [](auto const& tested) { return std::string(tested.param.name); });

class ApplicationVersions : public testing::TestWithParam<std::pair<char const*, char const*>> {};

TEST_P(ApplicationVersions, AreTakenByNumberAndByName) {
    auto const& [written, number] = GetParam();
    auto const connections = parseSessionText(
        sessionWith("DefaultApplVerID=" + std::string(written) + "\n"), "some.cfg");
    EXPECT_EQ(connections.at(0).valueOf("DefaultApplVerID"), number);
}

INSTANTIATE_TEST_SUITE_P(Names, ApplicationVersions,
                         testing::Values(std::pair{"2", "2"}, std::pair{"FIX.4.0", "2"},
                                         std::pair{"FIX.4.4", "6"}, std::pair{"7", "7"},
                                         std::pair{"FIX.5.0", "7"}, std::pair{"FIX.5.0SP1", "8"},
                                         std::pair{"FIX50SP1", "8"}, std::pair{"9", "9"},
                                         std::pair{"FIX.5.0SP2", "9"}, std::pair{"FIX50SP2", "9"},
                                         std::pair{"fix.5.0sp2", "9"}, std::pair{"10", "10"},
                                         std::pair{"FIX.Latest", "10"}));

class EveryRequiredKey : public testing::TestWithParam<zan::server::RequiredKey> {};

TEST_P(EveryRequiredKey, IsMissedByName) {
    std::string text;
    std::string const whole = smallestSession + link;
    for (std::size_t start = 0; start < whole.size();) {
        std::size_t const end = whole.find('\n', start) + 1;
        std::string const line = whole.substr(start, end - start);
        if (!line.starts_with(std::string(GetParam().name) + "=")) {
            text += line;
        }
        start = end;
    }
    EXPECT_EQ(errorOf(text), "some.cfg:1: " + std::string(GetParam().name) +
                                 ": is missing, here and in [DEFAULT]; " +
                                 std::string(GetParam().name) + "=" +
                                 std::string(GetParam().example) + " could stand here");
}

INSTANTIATE_TEST_SUITE_P(All, EveryRequiredKey,
                         testing::ValuesIn(zan::server::requiredSessionKeys()),
                         [](auto const& tested) { return std::string(tested.param.name); });

TEST(SessionFile, TellsThatAFileIsMissing) {
    try {
        readSessionFile("/no/such.cfg");
        FAIL() << "a missing file was read";
    } catch (WrongConfigurationException const& e) {
        EXPECT_EQ(e.getMessage(), "/no/such.cfg: cannot be read (No such file or directory); the "
                                  "path of a session file would be right here");
    }
}

TEST(SessionFile, TellsThatAFolderIsNoFile) {
    try {
        readSessionFile("/tmp");
        FAIL() << "a folder was read";
    } catch (WrongConfigurationException const& e) {
        EXPECT_EQ(e.getMessage(), "/tmp: is a folder; a session file would be right here");
    }
}

TEST(SessionFile, IsReadFromItsFile) {
    auto const path = std::filesystem::temp_directory_path() /
                      ("zan-session-file-" + std::to_string(getpid()) + ".cfg");
    std::ofstream(path) << smallestSession << link;
    EXPECT_EQ(readSessionFile(path.string()).size(), 1u);
    std::filesystem::remove(path);
}

TEST(SessionKeys, TellWhichValuesAreSecret) {
    EXPECT_TRUE(zan::server::isSecretKey("MySQLStorePassword"));
    EXPECT_FALSE(zan::server::isSecretKey("SenderCompID"));
}

} // namespace
