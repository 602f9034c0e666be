/// What a log does when nobody waits for it.
///
/// Threads: any.
#ifndef ZANENGINE_SERVER_LOG_LOGMAINTENANCE_H
#define ZANENGINE_SERVER_LOG_LOGMAINTENANCE_H

#include "server/log/LogMarks.h"
#include "server/log/LogWriter.h"
#include "server/log/OrderIndex.h"
#include "server/log/SpaceReserve.h"

#include <chrono>
#include <mutex>
#include <optional>
#include <string>

namespace zan::server {

class LogMaintenance {
public:
    /// What everything works on, all of which has to outlive this.
    struct Parts {
        WriteConnection& connection;
        LogWriter& writer;
        ReadPool& readers;
        LogMarks& marks;
        OrderIndex& orders;
        SpaceReserve& reserve;
    };

    explicit LogMaintenance(Parts const& parts) : parts_(parts) {}

    /// One round. Failures wait for the next.
    void run();

    /// True, once, when a write had failed and the storage is found to work again. It is tried out
    /// for that, at most once a second.
    bool worksAgain();

private:
    bool isIdle() const;
    void indexOrders();
    void movePages();

    Parts const parts_;
    std::mutex mutex_;
    std::optional<Database> mover_;
    std::uint64_t movedChanges_ = 0;
    std::optional<std::chrono::steady_clock::time_point> nextTrial_;
};

} // namespace zan::server

#endif
