/// What stands behind `embedded:demo`: a counterparty inside the module that fills orders, and the
/// connection to it.
///
/// Threads: made and ended by the adapter's owner.
#ifndef ZANENGINE_TRANSPORTS_EMBEDDED_DEMOCOUNTERPARTY_H
#define ZANENGINE_TRANSPORTS_EMBEDDED_DEMOCOUNTERPARTY_H

#include "server/config/SessionFile.h"
#include "server/counterparty/Counterparty.h"
#include "transports/embedded/TemporaryFolder.h"

#include <string>
#include <vector>

namespace zan::embedded {

class DemoCounterparty {
public:
    /// Listens on a loopback port that the system picks, and makes a fresh folder for the engine's
    /// data, which goes with this object: the engine must have stopped then. Throws
    /// `WrongConfigurationException`.
    DemoCounterparty();

    DemoCounterparty(DemoCounterparty const&) = delete;
    DemoCounterparty& operator=(DemoCounterparty const&) = delete;

    /// One connection, `DEMO`.
    std::vector<server::ConnectionSettings> connections() const;
    std::string const& dataFolder() const { return folder_.path(); }

private:
    server::Counterparty counterparty_;
    TemporaryFolder const folder_;
};

} // namespace zan::embedded

#endif
