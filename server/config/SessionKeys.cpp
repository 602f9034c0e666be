#include "server/config/SessionKeys.h"

#include "server/config/Spelling.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <iterator>

namespace zan::server {

namespace {

struct KnownKey {
    std::string_view name;
    ValueRule rule;
};

constexpr KnownKey knownKeys[] = {
    {"ConnectionName", ValueRule::Identifier},
    {"Durability", ValueRule::Durability},
    {"LogonTimeout", ValueRule::PositiveNumber},
    {"ConnectAtStart", ValueRule::Flag},

    {"ConnectionType", ValueRule::InitiatorOnly},
    {"BeginString", ValueRule::Version},
    {"SenderCompID", ValueRule::Identifier},
    {"TargetCompID", ValueRule::Identifier},
    {"SessionQualifier", ValueRule::Identifier},
    {"DefaultApplVerID", ValueRule::ApplicationVersion},
    {"HeartBtInt", ValueRule::PositiveNumber},

    {"StartTime", ValueRule::TimeOfDay},
    {"EndTime", ValueRule::TimeOfDay},
    {"StartDay", ValueRule::Day},
    {"EndDay", ValueRule::Day},
    {"LogonTime", ValueRule::TimeOfDay},
    {"LogoutTime", ValueRule::TimeOfDay},
    {"LogonDay", ValueRule::Day},
    {"LogoutDay", ValueRule::Day},
    {"UseLocalTime", ValueRule::Flag},

    {"SocketConnectHost", ValueRule::Text},
    {"SocketConnectPort", ValueRule::Port},
    {"SocketConnectSourceHost", ValueRule::Text},
    {"SocketConnectSourcePort", ValueRule::Port},
    {"SocketAcceptPort", ValueRule::Port},
    {"SocketReuseAddress", ValueRule::Flag},
    {"SocketNodelay", ValueRule::Flag},
    {"SocketSendBufferSize", ValueRule::Number},
    {"SocketReceiveBufferSize", ValueRule::Number},
    {"ReconnectInterval", ValueRule::PositiveNumber},
    {"HttpAcceptPort", ValueRule::Port},

    {"UseDataDictionary", ValueRule::Flag},
    {"DataDictionary", ValueRule::Text},
    {"TransportDataDictionary", ValueRule::Text},
    {"AppDataDictionary", ValueRule::Text},
    {"ValidateLengthAndChecksum", ValueRule::Flag},
    {"ValidateFieldsOutOfOrder", ValueRule::Flag},
    {"ValidateFieldsHaveValues", ValueRule::Flag},
    {"ValidateUserDefinedFields", ValueRule::Flag},
    {"AllowUnknownMsgFields", ValueRule::Flag},
    {"PreserveMessageFieldsOrder", ValueRule::Flag},
    {"CheckCompID", ValueRule::Flag},
    {"CheckLatency", ValueRule::Flag},
    {"MaxLatency", ValueRule::PositiveNumber},
    {"LogoutTimeout", ValueRule::PositiveNumber},
    {"SendResetSeqNumFlag", ValueRule::Flag},
    {"SendRedundantResendRequests", ValueRule::Flag},
    {"ResetOnLogon", ValueRule::Flag},
    {"ResetOnLogout", ValueRule::Flag},
    {"ResetOnDisconnect", ValueRule::Flag},
    {"RefreshOnLogon", ValueRule::Flag},
    {"MillisecondsInTimeStamp", ValueRule::Flag},
    {"TimestampPrecision", ValueRule::Number},
    {"PersistMessages", ValueRule::Flag},

    // Stores and logs of QuickFIX's: a file that other programs share may name them. The engine
    // keeps its own, in its data folder.
    {"FileStorePath", ValueRule::Text},
    {"FileLogPath", ValueRule::Text},
    {"FileLogBackupPath", ValueRule::Text},
    {"ScreenLogShowIncoming", ValueRule::Flag},
    {"ScreenLogShowOutgoing", ValueRule::Flag},
    {"ScreenLogShowEvents", ValueRule::Flag},
    {"MySQLStoreUseConnectionPool", ValueRule::Flag},
    {"MySQLStoreDatabase", ValueRule::Text},
    {"MySQLStoreUser", ValueRule::Text},
    {"MySQLStorePassword", ValueRule::Text},
    {"MySQLStoreHost", ValueRule::Text},
    {"MySQLStorePort", ValueRule::Port},
    {"PostgreSQLStoreUseConnectionPool", ValueRule::Flag},
    {"PostgreSQLStoreDatabase", ValueRule::Text},
    {"PostgreSQLStoreUser", ValueRule::Text},
    {"PostgreSQLStorePassword", ValueRule::Text},
    {"PostgreSQLStoreHost", ValueRule::Text},
    {"PostgreSQLStorePort", ValueRule::Port},
    {"OdbcStoreUser", ValueRule::Text},
    {"OdbcStorePassword", ValueRule::Text},
    {"OdbcStoreConnectionString", ValueRule::Text},
    {"MySQLLogUseConnectionPool", ValueRule::Flag},
    {"MySQLLogDatabase", ValueRule::Text},
    {"MySQLLogUser", ValueRule::Text},
    {"MySQLLogPassword", ValueRule::Text},
    {"MySQLLogHost", ValueRule::Text},
    {"MySQLLogPort", ValueRule::Port},
    {"MySQLLogIncomingTable", ValueRule::Text},
    {"MySQLLogOutgoingTable", ValueRule::Text},
    {"MySQLLogEventTable", ValueRule::Text},
    {"PostgreSQLLogUseConnectionPool", ValueRule::Flag},
    {"PostgreSQLLogDatabase", ValueRule::Text},
    {"PostgreSQLLogUser", ValueRule::Text},
    {"PostgreSQLLogPassword", ValueRule::Text},
    {"PostgreSQLLogHost", ValueRule::Text},
    {"PostgreSQLLogPort", ValueRule::Port},
    {"PostgreSQLLogIncomingTable", ValueRule::Text},
    {"PostgreSQLLogOutgoingTable", ValueRule::Text},
    {"PostgreSQLLogEventTable", ValueRule::Text},
    {"OdbcLogUser", ValueRule::Text},
    {"OdbcLogPassword", ValueRule::Text},
    {"OdbcLogConnectionString", ValueRule::Text},
    {"OdbcLogIncomingTable", ValueRule::Text},
    {"OdbcLogOutgoingTable", ValueRule::Text},
    {"OdbcLogEventTable", ValueRule::Text},

    // A link that is asked to be encrypted must not be opened in the clear without a word.
    {"ServerCertificateFile", ValueRule::NoTls},
    {"ServerCertificateKeyFile", ValueRule::NoTls},
    {"ClientCertificateFile", ValueRule::NoTls},
    {"ClientCertificateKeyFile", ValueRule::NoTls},
    {"CertificationAuthoritiesFile", ValueRule::NoTls},
    {"CertificationAuthoritiesDirectory", ValueRule::NoTls},
    {"CertificateRevocationListFile", ValueRule::NoTls},
    {"CertificateRevocationListDirectory", ValueRule::NoTls},
    {"CertificateVerifyLevel", ValueRule::NoTls},
    {"SSLProtocol", ValueRule::NoTls},
    {"SSLCipherSuite", ValueRule::NoTls},
};

bool equalIgnoringCase(std::string_view left, std::string_view right) {
    return std::ranges::equal(left, right, sameLetter);
}

bool startsWithIgnoringCase(std::string_view text, std::string_view start) {
    return text.size() >= start.size() && equalIgnoringCase(text.substr(0, start.size()), start);
}

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

bool isNumberWithin(std::string_view text, long lowest, long highest) {
    long number = 0;
    auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc{} && end == text.data() + text.size() && isDigit(text.front()) &&
           number >= lowest && number <= highest;
}

bool isTimeOfDay(std::string_view text) {
    return text.size() == 8 && text[2] == ':' && text[5] == ':' &&
           isNumberWithin(text.substr(0, 2), 0, 23) && isNumberWithin(text.substr(3, 2), 0, 59) &&
           isNumberWithin(text.substr(6, 2), 0, 59);
}

bool isDay(std::string_view text) {
    constexpr std::string_view days[] = {"sunday",   "monday", "tuesday", "wednesday",
                                         "thursday", "friday", "saturday"};
    return text.size() >= 2 && std::ranges::any_of(days, [&](std::string_view day) {
               return startsWithIgnoringCase(day, text);
           });
}

// By the value of ApplVerID (1128).
constexpr std::string_view applicationVersions[] = {
    "FIX.2.7", "FIX.3.0", "FIX.4.0",    "FIX.4.1",    "FIX.4.2",   "FIX.4.3",
    "FIX.4.4", "FIX.5.0", "FIX.5.0SP1", "FIX.5.0SP2", "FIX.Latest"};

// A version may be written with and without its dots. -1 when there is no such version.
int applicationVersion(std::string_view text) {
    std::string plain(text);
    std::erase(plain, '.');
    for (int number = 0; number < static_cast<int>(std::size(applicationVersions)); ++number) {
        std::string name(applicationVersions[number]);
        std::erase(name, '.');
        if (text == std::to_string(number) || equalIgnoringCase(plain, name)) {
            return number;
        }
    }
    return -1;
}

bool isVersion(std::string_view text) {
    constexpr std::string_view versions[] = {"FIX.4.0", "FIX.4.1", "FIX.4.2",
                                             "FIX.4.3", "FIX.4.4", "FIXT.1.1"};
    return std::ranges::find(versions, text) != std::end(versions);
}

bool isIdentifier(std::string_view text) {
    return std::ranges::all_of(
        text, [](char c) { return static_cast<unsigned char>(c) >= ' ' && c != 127 && c != '/'; });
}

constexpr long largestNumber = 2147483647;

std::optional<SessionKey> findNumberedKey(std::string_view name) {
    for (KnownKey const& key : knownKeys) {
        bool const mayBeNumbered =
            key.name == "SocketConnectHost" || key.name == "SocketConnectPort";
        if (mayBeNumbered && startsWithIgnoringCase(name, key.name)) {
            std::string_view const number = name.substr(key.name.size());
            if (!number.empty() && number.front() != '0' && std::ranges::all_of(number, isDigit)) {
                return SessionKey{std::string(key.name).append(number), key.rule};
            }
        }
    }
    return std::nullopt;
}

} // namespace

std::optional<SessionKey> findSessionKey(std::string_view name) {
    auto const found = std::ranges::find_if(
        knownKeys, [&](KnownKey const& key) { return equalIgnoringCase(key.name, name); });
    if (found != std::end(knownKeys)) {
        return SessionKey{std::string(found->name), found->rule};
    }
    return findNumberedKey(name);
}

std::string_view nearestSessionKey(std::string_view name) {
    std::vector<std::string_view> known;
    for (KnownKey const& key : knownKeys) {
        known.push_back(key.name);
    }
    return nearestWord(name, known);
}

std::string_view whatWouldBeRight(ValueRule rule, std::string_view value) {
    if (value.empty()) {
        return "a value is needed";
    }
    auto const unless = [](bool good, std::string_view right) {
        return good ? std::string_view{} : right;
    };
    switch (rule) {
    case ValueRule::Text:
        return {};
    case ValueRule::Identifier:
        return unless(isIdentifier(value), "printable characters without '/' would be right");
    case ValueRule::Flag:
        return unless(equalIgnoringCase(value, "Y") || equalIgnoringCase(value, "N"),
                      "Y or N would be right");
    case ValueRule::Port:
        return unless(isNumberWithin(value, 1, 65535), "a port from 1 to 65535 would be right");
    case ValueRule::Number:
        return unless(isNumberWithin(value, 0, largestNumber),
                      "a whole number, 0 or greater, would be right");
    case ValueRule::PositiveNumber:
        return unless(isNumberWithin(value, 1, largestNumber),
                      "a whole number, 1 or greater, would be right");
    case ValueRule::TimeOfDay:
        return unless(isTimeOfDay(value), "a time of the form HH:MM:SS would be right");
    case ValueRule::Day:
        return unless(isDay(value), "a day of the week, such as Monday or mo, would be right");
    case ValueRule::Version:
        return unless(isVersion(value), "FIX.4.0 to FIX.4.4 or FIXT.1.1 would be right");
    case ValueRule::ApplicationVersion:
        return unless(applicationVersion(value) >= 0,
                      "2 to 10 or their names, FIX.4.0 to FIX.4.4, FIX.5.0, FIX.5.0SP1, "
                      "FIX.5.0SP2 and FIX.Latest, would be right");
    case ValueRule::InitiatorOnly:
        return unless(value == "initiator",
                      "only initiator is offered here: this engine accepts no connections");
    case ValueRule::Durability:
        return unless(value == "normal" || value == "full", "normal or full would be right");
    case ValueRule::NoTls:
        return "this engine opens no encrypted links; leave the key out and connect to the near "
               "end of an encrypting tunnel";
    }
    return {};
}

std::string properValue(ValueRule rule, std::string_view value) {
    switch (rule) {
    case ValueRule::Flag:
        return equalIgnoringCase(value, "Y") ? "Y" : "N";
    case ValueRule::ApplicationVersion:
        return std::to_string(applicationVersion(value));
    default:
        return std::string(value);
    }
}

std::vector<RequiredKey> const& requiredSessionKeys() {
    static std::vector<RequiredKey> const keys = {
        {"ConnectionType", "initiator"},
        {"BeginString", "FIX.4.4"},
        {"SenderCompID", "US"},
        {"TargetCompID", "THEM"},
        {"StartTime", "00:00:00"},
        {"EndTime", "00:00:00"},
        {"HeartBtInt", "30"},
        {"SocketConnectHost", "localhost"},
        {"SocketConnectPort", "5001"},
    };
    return keys;
}

bool isEngineKey(std::string_view name) {
    return name == "ConnectionName" || name == "Durability" || name == "ConnectAtStart";
}

bool isSecretKey(std::string_view name) {
    return name.ends_with("Password") || name.ends_with("ConnectionString");
}

} // namespace zan::server
