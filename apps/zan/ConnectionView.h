/// How a connection stands, for people and programs, and the news that its state has changed.
///
/// Threads: one at a time.
#ifndef ZANENGINE_APPS_ZAN_CONNECTIONVIEW_H
#define ZANENGINE_APPS_ZAN_CONNECTIONVIEW_H

#include "adapter/IZANEventListener.h"
#include "apps/zan/Interrupt.h"
#include "apps/zan/Record.h"
#include "apps/zan/Session.h"
#include "infra/counted_ptr.h"

#include <string>

namespace zan::cli {

/// The state of the connection as it is now.
Record stateRecord(Session const& session, std::string const& name);

/// Wakes who waits at `interrupt` whenever the connection has news: a message or another state.
class EventWatch {
public:
    EventWatch(Session& session, std::string name, Interrupt& interrupt);
    ~EventWatch();
    EventWatch(EventWatch const&) = delete;
    EventWatch& operator=(EventWatch const&) = delete;

    /// The state as text, to see whether it has changed.
    std::string stateText() const;

private:
    Session& session_;
    std::string const name_;
    counted_ptr<IZANEventListener> listener_;
};

} // namespace zan::cli

#endif
