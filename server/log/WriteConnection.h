/// The one connection that writes into the log's file.
///
/// Threads: any; one transaction at a time.
#ifndef ZANENGINE_SERVER_LOG_WRITECONNECTION_H
#define ZANENGINE_SERVER_LOG_WRITECONNECTION_H

#include "server/log/LogRow.h"
#include "server/log/Sqlite.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <mutex>
#include <utility>

#include <sys/types.h>

namespace zan::server {

class WriteConnection {
public:
    /// Opens the file or makes it, and brings its tables up.
    explicit WriteConnection(LogSettings const& settings);

    /// Runs `work(*this)` in one transaction. Whatever it or the commit throws leaves the file as
    /// it was before.
    template <class Work>
    void transact(Work const& work) {
        change([&] {
            begin_.run();
            try {
                work(*this);
                commit_.run();
            } catch (...) {
                database_.rollBack();
                throw;
            }
        });
    }

    /// A transaction of one row only, which costs least.
    void insertAlone(LogRow const& row, std::string const& time);

    /// Stores a row of some size and takes it away again, in one transaction: whether a message
    /// could be stored, without a message.
    void tryOut();

    /// Whether a write has failed since `tryOut` worked last. Any thread.
    bool hasFailed() const { return hasFailed_; }

    // Inside of a transaction, and while the log is being opened.

    Database& database() { return database_; }
    RowWriter& rows() { return rows_; }
    void setMeta(std::string_view name, std::int64_t value);

    std::int64_t meta(std::string_view name);

    /// How many transactions there were. Any thread.
    std::uint64_t changes() const { return changes_.load(std::memory_order_relaxed); }

private:
    template <class Write>
    void change(Write const& write) {
        std::lock_guard const lock(mutex_);
        try {
            requireFile();
            write();
            ++changes_;
        } catch (LogFailure const&) {
            hasFailed_ = true;
            throw;
        }
    }

    /// Throws `LogFailure` when the file is not in its place any more: what was written into it
    /// then would be lost. Found out within 50 ms.
    void requireFile();

    std::mutex mutex_;
    Database database_;
    Statement begin_;
    Statement commit_;
    RowWriter rows_;
    std::pair<dev_t, ino_t> identity_;
    std::chrono::steady_clock::time_point nextLook_;
    std::atomic<std::uint64_t> changes_ = 0;
    std::atomic<bool> hasFailed_ = false;
};

} // namespace zan::server

#endif
