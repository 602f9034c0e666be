#include "apps/zan/ConnectionView.h"

#include "events/ZANConnectionState.h"
#include "infra/Time.h"

#include <cmath>
#include <utility>

namespace zan::cli {

namespace {

struct FlagName {
    long flag;
    char const* name;
};

// What is told of a state beside whether the session is up.
constexpr FlagName troubles[] = {
    {FLAG_DB_ERROR, "storage error"},  {FLAG_CRYPT_ERROR, "encryption error"},
    {FLAG_UNREACHABLE, "unreachable"}, {FLAG_UNAVAILABLE, "unavailable"},
    {FLAG_BROKEN, "broken"},           {FLAG_TIMED_OUT, "timed out"},
    {FLAG_ON_HOLD, "on hold"}};

bool hasTrouble(ZANConnectionState const& state) {
    for (FlagName const& trouble : troubles) {
        if (state.isStateActive(trouble.flag)) {
            return true;
        }
    }
    return false;
}

std::string stateName(ZANConnectionState const& state) {
    std::string name = state.isSessionActive() ? "logged on"
                       : state.isLinkActive()  ? "link up"
                       : state.isLoggedOut()   ? "logged out"
                                               : "disconnected";
    for (FlagName const& trouble : troubles) {
        name += state.isStateActive(trouble.flag) ? std::string(", ") + trouble.name : "";
    }
    return name;
}

FieldValue timeOf(double millis) {
    if (millis <= 0) {
        return nullptr;
    }
    return infra::Time(static_cast<std::int64_t>(std::llround(millis))).toString();
}

// Only to wake: what there is to show is asked of the engine.
class Waker final : public IZANEventListener {
public:
    explicit Waker(Interrupt& interrupt) : interrupt_(interrupt) {}
    void processEvent(counted_ptr<ZANEvent>) override { interrupt_.wake(); }
    void processStateEvent(counted_ptr<ZANConnectionStateEvent>) override { interrupt_.wake(); }

private:
    Interrupt& interrupt_;
};

} // namespace

Record stateRecord(Session const& session, std::string const& name) {
    auto const state = session.engine().getConnectionState(session.ticket(), name);
    Tone const tone = hasTrouble(*state)         ? Tone::Bad
                      : state->isSessionActive() ? Tone::Good
                                                 : Tone::Plain;
    FieldValue heartbeat = nullptr;
    if (state->getHeartbeats() >= 0) {
        heartbeat = static_cast<long long>(state->getHeartbeats());
    }
    return {{"name", name},
            {"state", stateName(*state), "", tone},
            {"since", timeOf(state->getTimeLastStateChange())},
            {"heartbeat", heartbeat},
            {"local", state->getLocalAddress()},
            {"remote", state->getRemoteAddress()},
            {"error", state->getLastError()}};
}

EventWatch::EventWatch(Session& session, std::string name, Interrupt& interrupt)
    : session_(session), name_(std::move(name)), listener_(new Waker(interrupt)) {
    session_.engine().subscribeDirect(session_.ticket(), name_, true, true, true, listener_);
}

EventWatch::~EventWatch() {
    try {
        session_.engine().destroyDirectSubscriber(listener_);
    } catch (std::exception const&) {
        // The engine ends next, and the listener with it.
    }
}

std::string EventWatch::stateText() const {
    return jsonLine(stateRecord(session_, name_));
}

} // namespace zan::cli
