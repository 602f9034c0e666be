/// How one connection stands, in figures for operators.
#ifndef ZANENGINE_SERVER_ENGINE_CONNECTIONFIGURES_H
#define ZANENGINE_SERVER_ENGINE_CONNECTIONFIGURES_H

#include "server/engine/LinkState.h"
#include "server/engine/TrafficCounters.h"
#include "server/log/MessageLog.h"

#include <chrono>
#include <cstddef>
#include <string>
#include <vector>

namespace zan::server {

/// How far a guaranteed listener is behind.
struct MarkFigures {
    LogMark mark;
    /// From the mark to the newest message of the stream, in ids of the connection; 0 when the
    /// listener has consumed that one.
    long lag = 0;
};

struct ConnectionFigures {
    std::string name;
    LinkState state;
    FixNumbers numbers;
    TrafficFigures traffic;
    std::vector<MarkFigures> marks;
    std::size_t deliveryQueue = 0;
    /// How long the delivery that is under way has taken.
    std::chrono::milliseconds delivery{};
    std::size_t waitingSenders = 0;
    std::size_t unsentBytes = 0;
    CommitFigures commits;
    LogSizes sizes;
};

} // namespace zan::server

#endif
