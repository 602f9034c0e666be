#include "server/sessions/SessionRunner.h"

#include <algorithm>
#include <new>

namespace zan {
namespace server {

namespace {
std::chrono::milliseconds const tickInterval(250);
std::size_t const mostAtOnce = 256;
} // namespace

SessionRunner::SessionRunner(FixSessionSettings const& settings, bool initiator,
                             FixSessionEvents& events)
    : events_(events), setup_(makeLinkSetup(settings, initiator)),
      session_(settings, initiator, events, link_), bytes_(64 * 1024) {
    framer_.setStrict(setup_.validatesFrames);
}

void SessionRunner::requestLogout(std::string const& text) {
    {
        std::lock_guard<std::mutex> lock(logoutMutex_);
        logoutText_ = text;
    }
    logoutRequested_ = true;
    link_.wakeUp().ring();
}

FixSendResult SessionRunner::send(std::vector<FixOutgoing> const& messages,
                                  std::chrono::milliseconds patience, std::vector<long>& ids) {
    Clock::time_point const deadline = Clock::now() + patience;
    ids.clear();
    if (!isLoggedOn() || isQuitting())
        return FixSendResult::notLoggedOn;
    if (!link_.waitForRoom(deadline))
        return isLoggedOn() && !link_.ending() ? FixSendResult::peerTooSlow
                                               : FixSendResult::notLoggedOn;
    return session_.send(messages, deadline, ids);
}

void SessionRunner::setReading(bool on) {
    reading_ = on;
    if (!link_.ending())
        link_.wakeUp().ring();
}

void SessionRunner::quit() {
    quitting_ = true;
    link_.end();
}

void SessionRunner::forgetRequests() {
    quitting_ = false;
    forgetLogout();
}

void SessionRunner::serve(int socket, std::string const& firstMessage) {
    logoutSaid_ = false;
    nextTick_ = Clock::now() + tickInterval;
    link_.open(socket);
    events_.linkUp(localAddress(socket), remoteAddress(socket));
    try {
        talk(firstMessage);
    } catch (std::bad_alloc const&) {
        session_.abandon("there is no memory for what came in; the link is ended");
    } catch (std::exception const& error) {
        session_.abandon(error.what());
    }
    finish();
}

void SessionRunner::talk(std::string const& firstMessage) {
    session_.attach();
    incoming_.assign(firstMessage.empty() ? 0 : 1, Incoming{firstMessage, std::string()});
    session_.take(incoming_);
    deliver();
    while (!link_.ending() && !quitting_) {
        if (link_.waitForWork(reading_, canResend() ? std::chrono::milliseconds(0) : timeToTick()))
            readBytes();
        deliver();
        if (canResend())
            session_.resendMore();
        handleLogoutRequest();
        tickWhenDue();
    }
}

bool SessionRunner::canResend() {
    return session_.hasMoreToResend() && link_.hasRoom();
}

void SessionRunner::readBytes() {
    long const count = link_.read(bytes_.data(), bytes_.size());
    if (count > 0)
        framer_.append(bytes_.data(), static_cast<std::size_t>(count));
}

void SessionRunner::deliver() {
    while (reading_ && !link_.ending() && !quitting_ && frameSome())
        session_.take(incoming_);
}

bool SessionRunner::frameSome() {
    incoming_.clear();
    while (incoming_.size() < mostAtOnce) {
        incoming_.emplace_back();
        Incoming& next = incoming_.back();
        if (framer_.next(next.text, next.fault) == FixFramer::Result::incomplete) {
            incoming_.pop_back();
            break;
        }
    }
    return !incoming_.empty();
}

void SessionRunner::handleLogoutRequest() {
    if (!logoutRequested_ || link_.ending())
        return;
    if (!logoutSaid_) {
        logoutSaid_ = true;
        logoutDeadline_ = Clock::now() + setup_.logoutTimeout;
        std::string text;
        {
            std::lock_guard<std::mutex> lock(logoutMutex_);
            text = logoutText_;
        }
        if (!session_.sayLogout(text))
            link_.end();
    } else if (Clock::now() >= logoutDeadline_) {
        events_.trouble(FixTrouble::timedOut, "the Logout was not answered within " +
                                                  std::to_string(setup_.logoutTimeout.count()) +
                                                  " s");
        link_.end();
    }
}

void SessionRunner::tickWhenDue() {
    if (link_.ending() || Clock::now() < nextTick_)
        return;
    nextTick_ = Clock::now() + tickInterval;
    if (reading_)
        session_.tick();
    else
        session_.tickWithoutReading();
}

std::chrono::milliseconds SessionRunner::timeToTick() const {
    using std::chrono::milliseconds;
    auto const left = std::chrono::duration_cast<milliseconds>(nextTick_ - Clock::now());
    return std::max(left + milliseconds(1), milliseconds(0));
}

void SessionRunner::finish() {
    std::string const fault = link_.fault();
    if (!fault.empty() && !logoutSaid_)
        events_.trouble(FixTrouble::session, fault);
    session_.detach();
    link_.close(!quitting_);
    framer_.clear();
    std::vector<Incoming>().swap(incoming_);
    events_.linkDown();
}

} // namespace server
} // namespace zan
