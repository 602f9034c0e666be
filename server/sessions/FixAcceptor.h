/// One listening port and the sessions that counterparties may open on it.
///
/// All operations may be called from any thread; `add` before `start` only.
#ifndef ZANENGINE_SERVER_SESSIONS_FIXACCEPTOR_H
#define ZANENGINE_SERVER_SESSIONS_FIXACCEPTOR_H

#include "server/sessions/FixSession.h"

#include <memory>
#include <string>

namespace zan {
namespace server {

class FixAcceptor {
public:
    /// Binds the port at once (0: one that the system picks) but accepts nobody before `start`.
    /// Throws std::runtime_error with address, port and the system's reason.
    static std::unique_ptr<FixAcceptor> listen(std::string const& address, int port);

    /// Stops everything.
    virtual ~FixAcceptor();

    virtual int port() const = 0;

    /// Adds a session that the counterparty opens; SenderCompID is ours, TargetCompID is theirs.
    /// Throws like `FixSession::initiator`. The session is the acceptor's and lives as long.
    /// Its `start` only sets the fields of the Logon that answers, and is called, if at all, before
    /// the acceptor's. After its `requestLogout` the counterparty may open it again, after its
    /// `stop` not.
    virtual FixSession& add(FixSessionSettings const& settings, FixSessionEvents& events) = 0;

    /// Begins to accept. A link whose first message is not a Logon for one of the sessions, or
    /// that says nothing for ten seconds, is closed; so is a second link for a session that has
    /// one.
    virtual void start() = 0;

    /// Closes the port and every link; on return no report is under way and none follows.
    virtual void stop() = 0;

protected:
    FixAcceptor() = default;
    FixAcceptor(FixAcceptor const&) = delete;
    FixAcceptor& operator=(FixAcceptor const&) = delete;
};

} // namespace server
} // namespace zan

#endif
