/// Finds the messages of an order. The index lies in a file of its own beside the log; all that is
/// in it comes from the log, so it is made anew when anything about it is in doubt.
///
/// Threads: any.
#ifndef ZANENGINE_SERVER_LOG_ORDERINDEX_H
#define ZANENGINE_SERVER_LOG_ORDERINDEX_H

#include "server/log/ReadPool.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace zan::server {

class OrderIndexFile;

class OrderIndex {
public:
    /// `logIdentity` and `lastOfLog` tell the log that the index belongs to, as it was opened. The
    /// file of the index is opened when it is needed.
    OrderIndex(std::string file, std::int64_t logIdentity, long lastOfLog);
    ~OrderIndex();
    OrderIndex(OrderIndex const&) = delete;
    OrderIndex& operator=(OrderIndex const&) = delete;

    /// Up to which row of the log the index has come.
    long reached() const { return reached_.load(std::memory_order_relaxed); }

    /// Takes up some of what the reader sees and the index has not; false when that is nothing.
    bool takeStep(ReadConnection& log);

    /// The ids of all messages of the orders that these ids and client order ids belong to, rising.
    std::vector<long> chain(ReadConnection& log, std::vector<int> const& ids,
                            std::vector<std::string> const& clientOrderIds);

private:
    OrderIndexFile& openFile();
    void removeFile();
    void withFile(std::function<void(OrderIndexFile&)> const& work);

    std::string const file_;
    std::int64_t const logIdentity_;
    long const lastOfLog_;
    std::mutex mutex_;
    std::unique_ptr<OrderIndexFile> open_;
    std::atomic<long> reached_ = 0;
};

} // namespace zan::server

#endif
