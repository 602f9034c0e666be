/// The figures of connections as Prometheus reads them.
///
/// Threads: functions without shared state.
#ifndef ZANENGINE_SERVER_METRICS_METRICSTEXT_H
#define ZANENGINE_SERVER_METRICS_METRICSTEXT_H

#include "server/engine/ConnectionFigures.h"

#include <cstdint>
#include <string>
#include <vector>

namespace zan::server {

struct EngineFigures {
    std::vector<ConnectionFigures> connections;
    /// How many reasons there are to call the engine sick.
    std::size_t ailments = 0;
    /// What the disk of the data folder has left, in bytes.
    std::uintmax_t freeBytes = 0;
};

/// What `metricsText` is, for those who get it over HTTP.
inline constexpr char const* metricsTextType = "text/plain; version=0.0.4; charset=utf-8";

/// Prometheus's text format. Names of connections and subscribers are labels; what they have beyond
/// printable ASCII is written as `%` and two hexadecimal digits.
std::string metricsText(EngineFigures const& figures);

} // namespace zan::server

#endif
