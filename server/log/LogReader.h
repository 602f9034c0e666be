/// What can be read at one moment of the log, by id and by time.
///
/// Threads: one at a time.
#ifndef ZANENGINE_SERVER_LOG_LOGREADER_H
#define ZANENGINE_SERVER_LOG_LOGREADER_H

#include "server/log/LogRow.h"
#include "server/log/ReadPool.h"

#include <functional>
#include <optional>
#include <utility>
#include <vector>

namespace zan::server {

/// Ids from the first to the second, both included; empty when the second is less.
using IdRange = std::pair<long, long>;

inline constexpr int allStreams = -1;

class LogReader {
public:
    using RowSink = std::function<void(LogRow&&)>;

    explicit LogReader(ReadConnection& connection) : connection_(connection) {}

    /// The newest row, 0 without one.
    long lastId();

    /// The newest message of the stream that listeners get, 0 without one.
    long newestDelivered(FixStream stream);

    /// The first row of the numbering.
    long numberingFirst();

    /// Rows that are hidden, and rows without a message, as well.
    std::optional<LogRow> row(long id);

    /// The ids of the rows of that time, both ends included.
    IdRange idsOf(std::pair<std::int64_t, std::int64_t> millis);

    /// The messages of the range that anybody may see.
    void messages(int stream, IdRange ids, bool newestFirst, RowSink const& sink);

    /// The ids of all messages that anybody may see.
    void ids(int stream, bool newestFirst, std::function<void(long)> const& sink);

    /// Where everything lies that was sent under these numbers, among the rows from `from` on.
    IdRange sentWithin(long from, int first, int last);

    /// What was sent under these numbers, among the rows from `from` on. A damaged row throws, or
    /// is left out. Ends when `sink` returns false.
    enum class Damaged { Throws, LeftOut };
    void sent(long from, int first, int last, Damaged damaged,
              std::function<bool(LogRow&&)> const& sink);

private:
    template <class IsReached>
    long firstWhere(IdRange ids, IsReached const& isReached);
    long firstAtOrAfter(std::int64_t millis, IdRange ids);
    long firstAfter(std::int64_t millis, IdRange ids);
    long firstWithNextOutAbove(int number, IdRange ids);

    ReadConnection& connection_;
};

} // namespace zan::server

#endif
