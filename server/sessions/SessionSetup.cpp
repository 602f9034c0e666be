#include "server/sessions/SessionSetup.h"

#include <algorithm>
#include <initializer_list>
#include <iterator>
#include <stdexcept>

namespace zan {
namespace server {

namespace {

void require(FIX::Dictionary const& keys, std::initializer_list<char const*> names) {
    for (char const* name : names)
        if (!keys.has(name))
            throw std::runtime_error(std::string("the session needs the key ") + name);
}

std::string textOr(FIX::Dictionary const& keys, std::string const& name,
                   std::string const& otherwise) {
    return keys.has(name) ? keys.getString(name) : otherwise;
}

int numberOr(FIX::Dictionary const& keys, std::string const& name, int otherwise) {
    if (!keys.has(name))
        return otherwise;
    try {
        int const number = keys.getInt(name);
        if (number >= 0)
            return number;
    } catch (std::exception const&) {
        // Told below, like a negative number.
    }
    throw std::runtime_error("the key " + name + " is \"" + keys.getString(name) +
                             "\" where a whole number is expected");
}

SocketTarget makeTarget(FIX::Dictionary const& keys) {
    SocketTarget target;
    target.sourceHost = textOr(keys, "SocketConnectSourceHost", "");
    target.sourcePort = textOr(keys, "SocketConnectSourcePort", "");
    target.noDelay = textOr(keys, "SocketNodelay", "Y") != "N";
    target.sendBuffer = numberOr(keys, "SocketSendBufferSize", 0);
    target.receiveBuffer = numberOr(keys, "SocketReceiveBufferSize", 0);
    return target;
}

// SocketConnectHost1, SocketConnectHost2 ... are tried after SocketConnectHost.
std::vector<SocketTarget> makeTargets(FIX::Dictionary const& keys) {
    std::vector<SocketTarget> targets;
    SocketTarget target = makeTarget(keys);
    std::string suffix;
    while (keys.has("SocketConnectHost" + suffix)) {
        target.host = keys.getString("SocketConnectHost" + suffix);
        target.port = std::to_string(numberOr(keys, "SocketConnectPort" + suffix, 0));
        targets.push_back(target);
        suffix = std::to_string(targets.size());
    }
    return targets;
}

// The hours are kept by SessionHours: for QuickFIX it is always open.
bool isOfHours(std::string const& key) {
    static char const* const keys[] = {"StartTime", "EndTime",   "StartDay",
                                       "EndDay",    "LogonTime", "LogoutTime",
                                       "LogonDay",  "LogoutDay", "UseLocalTime"};
    return std::find(std::begin(keys), std::end(keys), key) != std::end(keys);
}

FIX::Dictionary collect(FixSessionSettings const& settings, bool initiator) {
    FIX::Dictionary keys;
    for (auto const& key : settings.keys)
        if (!isOfHours(key.first))
            keys.setString(key.first, key.second);
    require(keys, {"BeginString", "SenderCompID", "TargetCompID"});
    if (initiator)
        require(keys, {"HeartBtInt", "SocketConnectHost", "SocketConnectPort"});
    return keys;
}

} // namespace

FIX::Dictionary makeDictionary(FixSessionSettings const& settings, bool initiator) {
    FIX::Dictionary keys = collect(settings, initiator);
    keys.setString("ConnectionType", initiator ? "initiator" : "acceptor");
    keys.setString("UseDataDictionary", "N");
    keys.setString("StartTime", "00:00:00");
    keys.setString("EndTime", "00:00:00");
    return keys;
}

FIX::SessionID makeSessionId(FIX::Dictionary const& keys) {
    return FIX::SessionID(keys.getString("BeginString"), keys.getString("SenderCompID"),
                          keys.getString("TargetCompID"), textOr(keys, "SessionQualifier", ""));
}

LinkSetup makeLinkSetup(FixSessionSettings const& settings, bool initiator) {
    FIX::Dictionary const keys = collect(settings, initiator);
    LinkSetup setup;
    setup.targets = initiator ? makeTargets(keys) : std::vector<SocketTarget>{makeTarget(keys)};
    setup.reconnectInterval = std::chrono::seconds(numberOr(keys, "ReconnectInterval", 30));
    setup.logonTimeout = std::chrono::seconds(numberOr(keys, "LogonTimeout", 10));
    setup.logoutTimeout = std::chrono::seconds(numberOr(keys, "LogoutTimeout", 2));
    setup.validatesFrames = textOr(keys, "ValidateLengthAndChecksum", "Y") != "N";
    return setup;
}

} // namespace server
} // namespace zan
