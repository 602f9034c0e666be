/// How far guaranteed listeners have come, stream by stream.
///
/// Marks change in memory, and are written together later: what is written late is delivered again,
/// never lost.
///
/// Threads: any.
#ifndef ZANENGINE_SERVER_LOG_LOGMARKS_H
#define ZANENGINE_SERVER_LOG_LOGMARKS_H

#include "server/log/WriteConnection.h"

#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace zan::server {

class LogMarks {
public:
    /// Reads the marks of the file. The connection has to outlive the marks.
    explicit LogMarks(WriteConnection& connection);

    /// Every mark that there is, by subscriber.
    std::vector<LogMark> all() const;

    /// -1 for none.
    int mark(std::string const& subscriber, FixStream stream) const;
    void set(std::string const& subscriber, FixStream stream, int id);
    void reset(std::string const& subscriber);

    /// Throws `LogFailure`; then everything waits for the next time.
    void flush();

private:
    using Key = std::pair<std::string, int>;
    // A mark that was taken away is there without a value until that is written.
    using Marks = std::map<Key, std::optional<int>>;

    void write(Marks const& changed);

    WriteConnection& connection_;
    // Held while marks are written, so that every flush returns after what came before it.
    std::mutex flushing_;
    mutable std::mutex mutex_;
    Marks marks_;
    Marks changed_;
};

} // namespace zan::server

#endif
