/// The turn of a session's store, with the session's work on it.
#ifndef ZANENGINE_SERVER_SESSIONS_QUICKFIXTURN_H
#define ZANENGINE_SERVER_SESSIONS_QUICKFIXTURN_H

#include "server/sessions/QuickFixSession.h"

#include <thread>

namespace zan {
namespace server {

// A report may make the session send: the thread has the turn already then.
class QuickFixSession::Turn {
public:
    explicit Turn(QuickFixSession& session,
                  FairLock::Clock::time_point deadline = FairLock::Clock::time_point::max())
        : session_(session), isInner_(session.turnHolder_ == std::this_thread::get_id()),
          isHeld_(isInner_ || session.log_.lockUntil(deadline)) {
        if (!isHeld_)
            return;
        session_.turnHolder_ = std::this_thread::get_id();
        session_.store_.begin();
    }
    ~Turn() {
        if (isHeld_ && !isInner_) {
            session_.turnHolder_ = std::thread::id();
            session_.log_.unlock();
        }
    }
    Turn(Turn const&) = delete;
    Turn& operator=(Turn const&) = delete;

    /// False when the turn was not free before the deadline.
    bool isHeld() const { return isHeld_; }

private:
    QuickFixSession& session_;
    bool const isInner_;
    bool const isHeld_;
};

} // namespace server
} // namespace zan

#endif
