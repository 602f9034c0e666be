#include "server/engine/ConnectionDiary.h"

#include "server/engine/EngineErrors.h"
#include "server/wire/FieldText.h"

#include <array>

namespace zan::server {

namespace {

constexpr char const* sessionCategory = "session";
constexpr char const* logCategory = "log";
constexpr char const* deliveryCategory = "delivery";

std::string fieldOf(FixEntry const& entry, int tag) {
    return std::string(valueOf(entry.text, tag));
}

// `: <text>`, or nothing.
std::string reasonOf(std::string const& text) {
    return text.empty() ? text : ": " + text;
}

std::string rangeOf(FixEntry const& resendRequest) {
    std::string const end = fieldOf(resendRequest, 16);
    return fieldOf(resendRequest, 7) + (end == "0" ? " and all after it" : " to " + end);
}

std::string rejectOf(FixEntry const& reject) {
    std::string const tag = fieldOf(reject, 371);
    return "message " + fieldOf(reject, 45) + (tag.empty() ? "" : ", tag " + tag) +
           reasonOf(fieldOf(reject, 58));
}

std::string resendAsked(FixEntry const& request) {
    return "the counterparty asks for our messages " + rangeOf(request) + " again";
}

std::string gapFound(FixEntry const& request) {
    return "a gap: the counterparty is asked for its messages " + rangeOf(request) + " again";
}

std::string rejectReceived(FixEntry const& reject) {
    return "the counterparty rejects our " + rejectOf(reject);
}

std::string rejectSent(FixEntry const& reject) {
    return "the counterparty gets a reject for its " + rejectOf(reject);
}

std::string logoutReceived(FixEntry const& logout) {
    return "the counterparty logs out" + reasonOf(fieldOf(logout, 58));
}

std::string logoutSent(FixEntry const& logout) {
    return "logs out" + reasonOf(fieldOf(logout, 58));
}

// The messages that are worth a line.
struct Notable {
    char const* type;
    bool isIn;
    DiagnosticLevel level;
    std::string (*text)(FixEntry const& entry);
};

constexpr std::array notable = {
    Notable{"2", true, DiagnosticLevel::Warning, resendAsked},
    Notable{"2", false, DiagnosticLevel::Warning, gapFound},
    Notable{"3", true, DiagnosticLevel::Warning, rejectReceived},
    Notable{"3", false, DiagnosticLevel::Warning, rejectSent},
    Notable{"j", true, DiagnosticLevel::Warning, rejectReceived},
    Notable{"j", false, DiagnosticLevel::Warning, rejectSent},
    Notable{"5", true, DiagnosticLevel::Info, logoutReceived},
    Notable{"5", false, DiagnosticLevel::Info, logoutSent},
};

bool isIn(FixStream stream) {
    return stream == FixStream::adminIn || stream == FixStream::appIn;
}

} // namespace

template <class Text>
void ConnectionDiary::tell(DiagnosticLevel level, char const* category, Text const& text) {
    queue_.tell(level, category, [&] { return "connection " + connection_ + ": " + text(); });
}

void ConnectionDiary::connecting(std::string const& address) {
    tell(DiagnosticLevel::Info, sessionCategory, [&] { return "connects to " + address; });
}

void ConnectionDiary::notConnected(std::string const& reason) {
    tell(DiagnosticLevel::Warning, sessionCategory, [&] { return "is not connected: " + reason; });
}

void ConnectionDiary::disconnecting(std::string const& reason) {
    tell(DiagnosticLevel::Info, sessionCategory, [&] { return "disconnects" + reasonOf(reason); });
}

void ConnectionDiary::stateChanged(LinkState const& state, FixNumbers numbers) {
    long const changed = state.flags ^ knownFlags_;
    if ((changed & FLAG_SESSION_ACTIVE) != 0) {
        tell(DiagnosticLevel::Info, sessionCategory, [&] {
            return state.has(FLAG_SESSION_ACTIVE)
                       ? "is logged on; the next numbers are " + std::to_string(numbers.nextOut) +
                             " out and " + std::to_string(numbers.nextIn) + " in"
                       : std::string("is logged off");
        });
    }
    if ((changed & FLAG_LINK_ACTIVE) != 0) {
        linkChanged(state);
    } else if ((changed & FLAG_UNAVAILABLE) != 0) {
        bool const isBack = !state.has(FLAG_UNAVAILABLE);
        tell(isBack ? DiagnosticLevel::Info : DiagnosticLevel::Warning, sessionCategory, [isBack] {
            return std::string("the counterparty ") + (isBack ? "reads again" : "does not read");
        });
    }
    if ((changed & FLAG_DB_ERROR) != 0 && !state.has(FLAG_DB_ERROR)) {
        tell(DiagnosticLevel::Info, logCategory,
             [] { return std::string("messages are stored again"); });
    }
    knownFlags_ = state.flags;
}

void ConnectionDiary::linkChanged(LinkState const& state) {
    bool const isUp = state.has(FLAG_LINK_ACTIVE);
    bool const isOrderly = isUp || state.has(FLAG_LOGGED_OUT) || state.lastError.empty();
    tell(isOrderly ? DiagnosticLevel::Info : DiagnosticLevel::Warning, sessionCategory, [&] {
        if (isUp) {
            return "the link is up, from " + state.local + " to " + state.remote;
        }
        return isOrderly ? "the link is closed" : "the link is lost: " + state.lastError;
    });
}

void ConnectionDiary::trouble(FixTrouble kind, std::string const& text) {
    if (kind == FixTrouble::storage) {
        tell(DiagnosticLevel::Error, logCategory, [&] { return "nothing can be stored: " + text; });
    } else {
        tell(DiagnosticLevel::Warning, sessionCategory, [&] { return text; });
    }
}

void ConnectionDiary::logged(std::vector<FixEntry> const& entries) {
    if (!isDiagnosing(DiagnosticLevel::Warning)) {
        return;
    }
    for (FixEntry const& entry : entries) {
        loggedEntry(entry);
    }
}

void ConnectionDiary::loggedEntry(FixEntry const& entry) {
    if (entry.origin == FixOrigin::wire) {
        loggedMessage(entry);
    } else if (entry.origin == FixOrigin::remark) {
        bool const isNote = entry.text.empty();
        tell(isNote ? DiagnosticLevel::Info : DiagnosticLevel::Warning, sessionCategory,
             [&] { return isNote ? entry.note : "a message is " + entry.note; });
    }
}

void ConnectionDiary::loggedMessage(FixEntry const& entry) {
    std::string_view const type = valueOf(entry.text, 35);
    for (Notable const& each : notable) {
        if (type == each.type && isIn(entry.stream) == each.isIn) {
            tell(each.level, sessionCategory, [&] { return each.text(entry); });
        }
    }
}

void ConnectionDiary::listenerTrouble(std::string const& text) {
    report(connection_, text);
    tell(DiagnosticLevel::Warning, deliveryCategory, [&] { return text; });
}

void ConnectionDiary::listenerGoesOn(std::string const& subscriber) {
    tell(DiagnosticLevel::Info, deliveryCategory,
         [&] { return "the guaranteed listener \"" + subscriber + "\" goes on"; });
}

} // namespace zan::server
