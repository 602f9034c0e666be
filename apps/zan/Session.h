/// The facade for as long as this object lives, and the ticket of who asks.
///
/// Threads: one at a time.
#ifndef ZANENGINE_APPS_ZAN_SESSION_H
#define ZANENGINE_APPS_ZAN_SESSION_H

#include "apps/zan/Interrupt.h"
#include "apps/zan/Settings.h"
#include "engine/ZANEngineProxy.h"
#include "infra/UserTicket.h"
#include "infra/counted_ptr.h"
#include "message/ZANFieldGroup.h"

#include <string>
#include <vector>

namespace zan::cli {

/// What a command does with the engine's data.
enum class Purpose { Reads, Changes };

class Session {
public:
    /// Starts the facade. Throws what `ZANEngineProxy::initialize` throws, and
    /// `WrongConfigurationException` when there is no URL or when it is none.
    /// An engine in this process makes its data folder, if it is missing, for changes only.
    Session(Settings const& settings, Interrupt& interrupt, Purpose purpose = Purpose::Changes);

    /// Ends the facade: with an engine in this process, every connection is logged out.
    ~Session();
    Session(Session const&) = delete;
    Session& operator=(Session const&) = delete;

    /// The same, with the exceptions.
    void close();

    ZANEngineProxy& engine() const { return ZANEngineProxy::getInstance(); }
    UserTicket const& ticket() const { return ticket_; }

    /// The engine lives and ends with this program; nobody else connects its connections.
    bool isInProcess() const { return isInProcess_; }

    std::vector<std::string> names() const;

    /// The given name, or, for none, that of the only connection. Throws `UsageError` when there
    /// are several.
    std::string nameOr(std::string const& given) const;

    /// The given name, or, for none, all of them.
    std::vector<std::string> namesOr(std::string const& given) const;

    /// Logs the connection on where it is not, with these fields in its Logon, if there are any. An
    /// interruption ends the attempt.
    void connect(std::string const& name, counted_ptr<ZANFieldGroup> const& fields = nullptr);

private:
    Interrupt& interrupt_;
    UserTicket const ticket_;
    bool isInProcess_ = false;
};

} // namespace zan::cli

#endif
