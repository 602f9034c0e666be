#include "server/engine/LinkState.h"

#include <chrono>

namespace zan::server {

counted_ptr<ZANConnectionState> LinkState::record() const {
    counted_ptr<ZANConnectionState> record(new ZANConnectionState(flags, changed, lastError));
    record->setHeartbeats(heartbeatSeconds);
    record->setLocalAddress(local);
    record->setRemoteAddress(remote);
    return record;
}

double nowMillis() {
    using namespace std::chrono;
    auto const now = system_clock::now().time_since_epoch();
    return static_cast<double>(duration_cast<milliseconds>(now).count());
}

} // namespace zan::server
