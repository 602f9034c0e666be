#include "server/engine/LinkWatch.h"

#include "infra/Time.h"
#include "server/wire/FieldText.h"
#include "server/wire/Secrets.h"

#include <utility>

namespace zan::server {

namespace {

constexpr int textTag = 58;
constexpr int testRequestIdTag = 112;

constexpr long whatALinkHeals = FLAG_LOGGED_OUT | FLAG_DISCONNECTED | FLAG_TIMED_OUT | FLAG_BROKEN |
                                FLAG_UNREACHABLE | FLAG_UNAVAILABLE;

long flagOf(FixTrouble kind) {
    switch (kind) {
    case FixTrouble::unreachable:
        return FLAG_UNREACHABLE;
    case FixTrouble::timedOut:
        return FLAG_TIMED_OUT;
    case FixTrouble::badBytes:
        return FLAG_BROKEN;
    case FixTrouble::storage:
        return FLAG_DB_ERROR;
    case FixTrouble::closed:
    case FixTrouble::session:
        break;
    }
    return 0;
}

} // namespace

LinkWatch::LinkWatch(std::function<void(LinkState const&)> publish)
    : publish_(std::move(publish)) {}

// The lock is held by all that call this.
void LinkWatch::change(long enter, long leave) {
    state_.flags = (state_.flags & ~leave) | enter;
    state_.changed = static_cast<double>(infra::Time::now().getMillis());
    publish_(state_);
    changed_.notify_all();
}

void LinkWatch::endLogon(LogonResult::Outcome outcome, std::string const& reason) {
    if (logon_.outcome == LogonResult::Outcome::Pending) {
        logon_ = {outcome, reason};
        changed_.notify_all();
    }
}

void LinkWatch::linkUp(std::string const& local, std::string const& remote) {
    std::lock_guard const lock(mutex_);
    state_.local = local;
    state_.remote = remote;
    isLogoutSent_ = isLogoutSeen_ = false;
    change(FLAG_LINK_ACTIVE, whatALinkHeals);
}

void LinkWatch::linkDown() {
    std::lock_guard const lock(mutex_);
    if (!state_.has(FLAG_LINK_ACTIVE)) {
        return;
    }
    if (!isLogoutSeen_ && state_.lastError.empty()) {
        state_.lastError = "the counterparty closed the link";
    }
    closeLink();
}

void LinkWatch::stopped() {
    std::lock_guard const lock(mutex_);
    if (state_.has(FLAG_LINK_ACTIVE)) {
        closeLink();
    }
}

void LinkWatch::closeLink() {
    endLogon(LogonResult::Outcome::Failed, state_.lastError);
    change(FLAG_DISCONNECTED, FLAG_LINK_ACTIVE | FLAG_SESSION_ACTIVE);
}

void LinkWatch::loggedOn(int heartbeatSeconds) {
    std::lock_guard const lock(mutex_);
    state_.heartbeatSeconds = heartbeatSeconds;
    state_.lastError.clear();
    endLogon(LogonResult::Outcome::LoggedOn, {});
    change(FLAG_SESSION_ACTIVE, whatALinkHeals);
}

void LinkWatch::loggedOff() {
    std::lock_guard const lock(mutex_);
    change(isLogoutSeen_ ? FLAG_LOGGED_OUT : 0, FLAG_SESSION_ACTIVE);
}

bool LinkWatch::trouble(FixTrouble kind, std::string const& what) {
    std::string const text = shownText(what);
    std::lock_guard const lock(mutex_);
    long const flag = flagOf(kind);
    bool const isNews = state_.lastError != text || (state_.flags & flag) != flag;
    state_.lastError = text;
    if (kind == FixTrouble::unreachable || kind == FixTrouble::timedOut ||
        kind == FixTrouble::closed) {
        endLogon(LogonResult::Outcome::Failed, text);
    } else if (kind == FixTrouble::storage) {
        endLogon(LogonResult::Outcome::NotStored, text);
    }
    // A counterparty that stays away is reported once, not with every attempt.
    if (isNews) {
        change(flag, 0);
    }
    return isNews;
}

void LinkWatch::stored() {
    std::lock_guard const lock(mutex_);
    if (state_.has(FLAG_DB_ERROR)) {
        change(0, FLAG_DB_ERROR);
    }
}

void LinkWatch::setUnavailable(bool on, std::string const& text) {
    std::lock_guard const lock(mutex_);
    if (on == state_.has(FLAG_UNAVAILABLE) || !state_.has(FLAG_LINK_ACTIVE)) {
        return;
    }
    state_.lastError = text;
    change(on ? FLAG_UNAVAILABLE : 0, FLAG_UNAVAILABLE);
}

void LinkWatch::setListenerTrouble(std::string const& text) {
    std::lock_guard const lock(mutex_);
    if (state_.listenerTrouble != text) {
        state_.listenerTrouble = text;
        change(0, 0);
    }
}

void LinkWatch::receivedAdmin(std::string const& message) {
    std::string_view const type = valueOf(message, messageTypeTag);
    if (type == "0") {
        std::lock_guard const lock(mutex_);
        auto const answered = awaited_.find(valueOf(message, testRequestIdTag));
        if (answered != awaited_.end()) {
            awaited_.erase(answered);
            changed_.notify_all();
        }
    } else if (type == "5" || type == "3") {
        std::lock_guard const lock(mutex_);
        std::string const text = shownText(std::string(valueOf(message, textTag)));
        if (!state_.has(FLAG_SESSION_ACTIVE)) {
            state_.lastError = text.empty() ? "refused without a reason" : text;
            endLogon(LogonResult::Outcome::Refused, state_.lastError);
        }
        if (type == "5") {
            noteLogout(text);
        }
    }
}

void LinkWatch::noteLogout(std::string const& text) {
    isLogoutSeen_ = true;
    if (!isLogoutSent_ && state_.has(FLAG_SESSION_ACTIVE)) {
        state_.lastError = text.empty() ? "logged out by the counterparty" : text;
    }
}

void LinkWatch::sentAdmin(std::string const& message) {
    if (valueOf(message, messageTypeTag) == "5") {
        std::lock_guard const lock(mutex_);
        isLogoutSent_ = isLogoutSeen_ = true;
    }
}

LinkState LinkWatch::state() const {
    std::lock_guard const lock(mutex_);
    return state_;
}

bool LinkWatch::isLoggedOn() const {
    std::lock_guard const lock(mutex_);
    return state_.has(FLAG_SESSION_ACTIVE);
}

void LinkWatch::beginLogon() {
    std::lock_guard const lock(mutex_);
    logon_ = {};
    state_.lastError.clear();
    state_.flags &= ~FLAG_UNREACHABLE;
}

LogonResult LinkWatch::waitForLogon(Clock::time_point deadline) {
    std::unique_lock lock(mutex_);
    changed_.wait_until(lock, deadline,
                        [this] { return logon_.outcome != LogonResult::Outcome::Pending; });
    if (logon_.outcome == LogonResult::Outcome::Pending) {
        state_.lastError =
            state_.has(FLAG_LINK_ACTIVE) ? "no answer to the Logon in time" : "no link in time";
        endLogon(LogonResult::Outcome::Failed, state_.lastError);
        change(FLAG_TIMED_OUT, 0);
    }
    return logon_;
}

void LinkWatch::cancelLogon(std::string const& reason) {
    std::lock_guard const lock(mutex_);
    endLogon(LogonResult::Outcome::Failed, reason);
}

bool LinkWatch::waitForLinkDown(Clock::time_point deadline) {
    std::unique_lock lock(mutex_);
    return changed_.wait_until(lock, deadline, [this] { return !state_.has(FLAG_LINK_ACTIVE); });
}

void LinkWatch::expectAnswer(std::string const& id) {
    std::lock_guard const lock(mutex_);
    awaited_.insert(id);
}

bool LinkWatch::waitForAnswer(std::string const& id, Clock::time_point deadline) {
    std::unique_lock lock(mutex_);
    changed_.wait_until(lock, deadline,
                        [&] { return !awaited_.contains(id) || !state_.has(FLAG_SESSION_ACTIVE); });
    return awaited_.erase(id) == 0;
}

} // namespace zan::server
