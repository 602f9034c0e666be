/// The times of a log's rows: never falling, as numbers and as texts.
///
/// Threads: one at a time.
#ifndef ZANENGINE_SERVER_LOG_LOGCLOCK_H
#define ZANENGINE_SERVER_LOG_LOGCLOCK_H

#include <string>
#include <string_view>

namespace zan::server {

/// The present, in milliseconds since 1970-01-01 00:00:00 UTC.
long long nowMillis();

/// `YYYYMMDD-HH:MM:SS.sss`, UTC; times too far away are written as the nearest that has a text.
std::string timeText(long long millis);

/// Throws `InfraException` for what is no such text.
long long millisOf(std::string_view text);

/// Writes times that lie close together.
class TimeWriter {
public:
    /// Valid until the next call.
    std::string const& text(long long millis);

private:
    long long second_ = -1;
    std::string text_;
};

} // namespace zan::server

#endif
