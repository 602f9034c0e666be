/// Counts what goes over a connection.
///
/// Threads: any. Counting takes no lock and waits for nobody.
#ifndef ZANENGINE_SERVER_ENGINE_TRAFFICCOUNTERS_H
#define ZANENGINE_SERVER_ENGINE_TRAFFICCOUNTERS_H

#include "server/engine/TypeCounters.h"
#include "server/sessions/FixSessionStore.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace zan::server {

inline constexpr std::size_t streamCount = 5;

/// What was counted, at one moment.
struct TrafficFigures {
    std::vector<TypeCount> in;  ///< over the wire, accepted
    std::vector<TypeCount> out; ///< over the wire, those that were sent again too
    std::uint64_t resentOnRequest = 0;
    std::uint64_t resentByApplication = 0;
    std::uint64_t refused = 0; ///< came in and were not accepted
    std::uint64_t posted = 0;  ///< by applications, for the listeners
    std::uint64_t listenerFailures = 0;
};

class TrafficCounters {
public:
    /// What was committed to the log.
    void count(std::vector<FixEntry> const& entries);
    void countListenerFailure() { listenerFailures_.fetch_add(1, std::memory_order_relaxed); }

    TrafficFigures figures() const;

    /// The newest message for listeners that was counted in the stream, 0 without one.
    long newestDelivered(FixStream stream) const;

private:
    void count(FixEntry const& entry);
    void countOnWire(FixEntry const& entry);

    TypeCounters in_;
    TypeCounters out_;
    std::atomic<std::uint64_t> resentOnRequest_{0};
    std::atomic<std::uint64_t> resentByApplication_{0};
    std::atomic<std::uint64_t> refused_{0};
    std::atomic<std::uint64_t> posted_{0};
    std::atomic<std::uint64_t> listenerFailures_{0};
    std::array<std::atomic<long>, streamCount> newest_{};
};

} // namespace zan::server

#endif
