#include "server/engine/LinkState.h"

namespace zan::server {

counted_ptr<ZANConnectionState> LinkState::record() const {
    std::string const separator = lastError.empty() || listenerTrouble.empty() ? "" : "; ";
    counted_ptr<ZANConnectionState> record(
        new ZANConnectionState(flags, changed, lastError + separator + listenerTrouble));
    record->setHeartbeats(heartbeatSeconds);
    record->setLocalAddress(local);
    record->setRemoteAddress(remote);
    return record;
}

} // namespace zan::server
