#include "server/engine/LinkState.h"

namespace zan::server {

counted_ptr<ZANConnectionState> LinkState::record() const {
    counted_ptr<ZANConnectionState> record(new ZANConnectionState(flags, changed, lastError));
    record->setHeartbeats(heartbeatSeconds);
    record->setLocalAddress(local);
    record->setRemoteAddress(remote);
    return record;
}

} // namespace zan::server
