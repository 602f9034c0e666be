#include "events/ZANConnectionState.h"

#include <array>
#include <cstddef>
#include <ctime>
#include <ostream>

std::string const ZANConnectionState::STATE_CONNECTED = "connected";
std::string const ZANConnectionState::STATE_NOT_CONNECTED = "disconnected";
std::string const ZANConnectionState::STATE_AUTHORIZING = "authorizing";
std::string const ZANConnectionState::STATE_UNAVAILABLE = "unavailable";
std::string const ZANConnectionState::STATE_AVAILABLE = "available";
std::string const ZANConnectionState::STATE_CONNECTING = "connecting";
std::string const ZANConnectionState::STATE_DISCONNECTING = "disconnecting";
std::string const ZANConnectionState::STATE_ON_HOLD = "on hold";
std::string const ZANConnectionState::MSGING_STATE_ACTIVE = "active";
std::string const ZANConnectionState::MSGING_STATE_IDLE = "idle";
std::string const ZANConnectionState::MSGING_STATE_TIMED_OUT = "timed out";
std::string const ZANConnectionState::MSGING_STATE_BROKEN = "broken";
std::string const ZANConnectionState::MSGING_STATE_LOGGED_OUT = "logged out";
std::string const ZANConnectionState::MSGING_STATE_UNREACHABLE = "unreachable";
std::string const ZANConnectionState::MSGING_STATE_REJECTED = "rejected";
std::string const ZANConnectionState::MSGING_STATE_DB_ERROR = "db error";
std::string const ZANConnectionState::MSGING_STATE_CRYPT_ERROR = "crypt error";

namespace {

std::int32_t low32(long word) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(word));
}

void writeLabelled(std::ostream& os, char const* label, std::string const& value) {
    constexpr std::size_t firstLengthNotShown = 2048;
    os << " [" << label << ": ";
    if (value.size() < firstLengthNotShown) {
        os << value;
    } else {
        os << " length = " << std::to_string(value.size());
    }
    os << "]";
}

/// Fills `local` and tells whether the time can be shown at all: not when it is no number, or has
/// no calendar date.
bool toLocalTime(double millis, std::tm& local) {
    double const rounded = millis / 1000.0 + 0.5;
    constexpr double limit = 9.2e18;
    if (!(rounded > -limit && rounded < limit)) {
        return false;
    }
    auto const wide = static_cast<std::int64_t>(rounded);
    auto const seconds = static_cast<std::time_t>(wide);
    return static_cast<std::int64_t>(seconds) == wide && localtime_r(&seconds, &local) != nullptr;
}

void writeTime(std::ostream& os, double millis) {
    std::tm local{};
    std::array<char, 2046> text;
    if (toLocalTime(millis, local) && std::strftime(text.data(), text.size(), "%c", &local) > 0) {
        os << text.data();
    }
}

std::string const& linkWord(ZANConnectionState const& record) {
    if (record.isLinkActive()) {
        return ZANConnectionState::STATE_CONNECTED;
    }
    return record.isOnHold() ? ZANConnectionState::STATE_ON_HOLD
                             : ZANConnectionState::STATE_NOT_CONNECTED;
}

char const* sessionWord(ZANConnectionState const& record) {
    if (record.isSessionActive()) {
        return "Logged on]";
    }
    return record.isLinkActive() ? "Not logged on]" : "]";
}

} // namespace

ZANConnectionState::ZANConnectionState() : heartbeats_(-1) {}

ZANConnectionState::ZANConnectionState(long state) : state_(low32(state)) {}

ZANConnectionState::ZANConnectionState(long state, double timeLastStateChange)
    : timeLastStateChange_(timeLastStateChange), state_(low32(state)) {}

ZANConnectionState::ZANConnectionState(long state, double timeLastStateChange,
                                       std::string const& lastError)
    : lastError_(lastError), timeLastStateChange_(timeLastStateChange), state_(low32(state)) {}

ZANConnectionState::~ZANConnectionState() = default;

long ZANConnectionState::getState() const {
    return state_;
}

void ZANConnectionState::setState(long state) {
    state_ = low32(state);
}

double ZANConnectionState::getTimeLastStateChange() const {
    return timeLastStateChange_;
}

void ZANConnectionState::setTimeLastStateChange(double millis) {
    timeLastStateChange_ = millis;
}

long ZANConnectionState::getHeartbeats() const {
    return heartbeats_;
}

void ZANConnectionState::setHeartbeats(long heartbeats) {
    heartbeats_ = low32(heartbeats);
}

std::string const& ZANConnectionState::getLastError() const {
    return lastError_;
}

std::string const& ZANConnectionState::getLocalAddress() const {
    return localAddress_;
}

std::string const& ZANConnectionState::getRemoteAddress() const {
    return remoteAddress_;
}

void ZANConnectionState::setLastError(std::string const& lastError) {
    lastError_ = lastError;
}

void ZANConnectionState::setLocalAddress(std::string const& localAddress) {
    localAddress_ = localAddress;
}

void ZANConnectionState::setRemoteAddress(std::string const& remoteAddress) {
    remoteAddress_ = remoteAddress;
}

void ZANConnectionState::enterState(long mask) {
    state_ |= low32(mask);
    saveCurrentTime();
}

void ZANConnectionState::leaveState(long mask) {
    state_ &= ~low32(mask);
    saveCurrentTime();
}

void ZANConnectionState::changeState(long mask, bool on) {
    if (on) {
        enterState(mask);
    } else {
        leaveState(mask);
    }
}

bool ZANConnectionState::isStateActive(long mask) const {
    return (state_ & low32(mask)) > 0;
}

bool ZANConnectionState::isLinkActive() const {
    return isStateActive(FLAG_LINK_ACTIVE);
}

bool ZANConnectionState::isSessionActive() const {
    return isStateActive(FLAG_SESSION_ACTIVE);
}

bool ZANConnectionState::isLoggedOut() const {
    return isStateActive(FLAG_LOGGED_OUT);
}

bool ZANConnectionState::isMessagingIdle() const {
    return isStateActive(FLAG_MESSAGING_IDLE);
}

bool ZANConnectionState::hasDisconnected() const {
    return isStateActive(FLAG_DISCONNECTED);
}

bool ZANConnectionState::isUnavailable() const {
    return isStateActive(FLAG_UNAVAILABLE);
}

bool ZANConnectionState::isOnHold() const {
    return isStateActive(FLAG_ON_HOLD);
}

void ZANConnectionState::saveCurrentTime() {
    auto const seconds = static_cast<std::int64_t>(std::time(nullptr));
    timeLastStateChange_ = static_cast<double>(seconds) * 1000.0;
}

std::ostream& ZANConnectionState::outState(std::ostream& os, bool& first, long mask,
                                           std::string const& name) const {
    if (!isStateActive(mask)) {
        return os;
    }
    // Despite its name `first` tells that something stands in the list already.
    if (first) {
        os << ", ";
    }
    os << name;
    first = true;
    return os;
}

void ZANConnectionState::outMessaging(std::ostream& os) const {
    if (isSessionActive()) {
        os << (isMessagingIdle() ? MSGING_STATE_IDLE : MSGING_STATE_ACTIVE);
        return;
    }
    // Broken stands before timed out, out of the order of the bits, on purpose.
    bool first = false;
    outState(os, first, FLAG_LOGGED_OUT, MSGING_STATE_LOGGED_OUT);
    outState(os, first, FLAG_BROKEN, MSGING_STATE_BROKEN);
    outState(os, first, FLAG_TIMED_OUT, MSGING_STATE_TIMED_OUT);
    outState(os, first, FLAG_DB_ERROR, MSGING_STATE_DB_ERROR);
    outState(os, first, FLAG_CRYPT_ERROR, MSGING_STATE_CRYPT_ERROR);
    outState(os, first, FLAG_UNREACHABLE, MSGING_STATE_UNREACHABLE);
    outState(os, first, FLAG_UNAVAILABLE, STATE_UNAVAILABLE);
}

std::ostream& operator<<(std::ostream& os, ZANConnectionState const& record) {
    os << " [" << linkWord(record) << ". " << sessionWord(record) << " [Messaging: ";
    record.outMessaging(os);
    os << "]";
    writeLabelled(os, "Remote address", record.remoteAddress_);
    writeLabelled(os, "Local address", record.localAddress_);
    os << " [Last state change: ";
    writeTime(os, record.timeLastStateChange_);
    os << "] [Heartbeat: " << std::to_string(record.heartbeats_) << "]";
    writeLabelled(os, "Last error", record.lastError_);
    return os;
}
