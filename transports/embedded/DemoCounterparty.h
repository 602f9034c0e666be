/// What stands behind `embedded:demo`: a counterparty inside the module that fills orders, and the
/// connection to it.
///
/// Threads: made and ended by the adapter's owner.
#ifndef ZANENGINE_TRANSPORTS_EMBEDDED_DEMOCOUNTERPARTY_H
#define ZANENGINE_TRANSPORTS_EMBEDDED_DEMOCOUNTERPARTY_H

#include "server/config/SessionFile.h"
#include "server/counterparty/Counterparty.h"

#include <string>
#include <vector>

namespace zan::embedded {

class DemoCounterparty {
public:
    /// Listens on a loopback port that the system picks, and makes a fresh folder for the engine's
    /// data. Throws `WrongConfigurationException`.
    DemoCounterparty();

    /// Removes the folder: the engine must have stopped.
    ~DemoCounterparty();
    DemoCounterparty(DemoCounterparty const&) = delete;
    DemoCounterparty& operator=(DemoCounterparty const&) = delete;

    /// One connection, `DEMO`.
    std::vector<server::ConnectionSettings> connections() const;
    std::string const& dataFolder() const { return folder_; }

private:
    server::Counterparty counterparty_;
    std::string const folder_;
};

} // namespace zan::embedded

#endif
