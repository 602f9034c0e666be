/// `ZANEvent`: what an adapter reports to applications: an administrative message, an application
/// message or a change of a connection's state, each a class of its own.
///
/// Ownership: an event owns its connection name and shares its message. A copy shares the same
/// message; a listener that keeps the message keeps its `counted_ptr`, the event may go.
///
/// Threads: no locks. An event, and what it shares, is used by one thread at a time.
#ifndef ZANENGINE_EVENTS_ZANEVENT_H
#define ZANENGINE_EVENTS_ZANEVENT_H

#include "infra/Export.h"
#include "infra/counted_ptr.h"
#include "message/ZANMessage.h"

#include <iosfwd>
#include <string>

class ZAN_API ZANEvent {
public:
    /// A message event. `message` may be empty as long as the event is not printed; a name given as
    /// characters must not be null.
    ZANEvent(std::string const& connectionName, counted_ptr<ZANMessage> message, bool admin);
    ZANEvent(char const* connectionName, counted_ptr<ZANMessage> message, bool admin);

    ZANEvent(ZANEvent const&) = default;
    ZANEvent& operator=(ZANEvent const&) = default;
    virtual ~ZANEvent();

    /// The connection that the event concerns. The reference is valid as long as the event.
    virtual std::string const& getConnectionName() const;

    /// The shared message; empty for a state event.
    virtual counted_ptr<ZANMessage> getMessage() const;

    /// True for an administrative message. Which listeners an event reaches depends on its class,
    /// not on this flag.
    virtual bool isAdmin() const;

protected:
    /// An event without a message.
    explicit ZANEvent(std::string const& connectionName);
    explicit ZANEvent(char const* connectionName);

    /// Only event classes change an event once it is built.
    virtual void setMessage(counted_ptr<ZANMessage> message);
    virtual void setConnectionName(std::string const& connectionName);

private:
    bool admin_;
    counted_ptr<ZANMessage> message_;
    std::string connectionName_;
};

/// Writes the connection name and the message, or the state of a `ZANConnectionStateEvent`. The
/// event must hold what is to be written: an empty message or state must not be printed.
ZAN_API std::ostream& operator<<(std::ostream& os, ZANEvent const& event);

#endif
