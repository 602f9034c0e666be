/// What comes to a message log while one looks at it, each entry once and in the order of the log.
///
/// Threads: one at a time.
#ifndef ZANENGINE_APPS_ZAN_LOGFOLLOWER_H
#define ZANENGINE_APPS_ZAN_LOGFOLLOWER_H

#include "apps/zan/LogSearch.h"
#include "apps/zan/Session.h"

#include <string>

namespace zan::cli {

class LogFollower {
public:
    /// Follows from what the log has now on.
    LogFollower(Session& session, std::string connection, long stream, std::string where);

    /// The newest entry that was seen, of whatever stream.
    long long lastId() const { return lastId_; }

    /// Gives out what came since the last call. Returns how many entries that were.
    long takeNew(RowSink const& sink);

private:
    Session& session_;
    std::string const connection_;
    long const stream_;
    std::string const where_;
    long long lastId_ = 0;
};

} // namespace zan::cli

#endif
