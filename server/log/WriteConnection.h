/// The one connection that writes into the log's file.
///
/// Threads: any; one transaction at a time.
#ifndef ZANENGINE_SERVER_LOG_WRITECONNECTION_H
#define ZANENGINE_SERVER_LOG_WRITECONNECTION_H

#include "server/log/AheadFile.h"
#include "server/log/FileWatch.h"
#include "server/log/LogRow.h"
#include "server/log/LogWitness.h"
#include "server/log/Sqlite.h"
#include "server/sessions/FairLock.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

namespace zan::server {

class WriteConnection {
public:
    /// Opens the file or makes it, and brings its tables up. Throws `LogFailure` when the files
    /// lack what was stored in them.
    explicit WriteConnection(LogSettings const& settings);
    ~WriteConnection();
    WriteConnection(WriteConnection const&) = delete;
    WriteConnection& operator=(WriteConnection const&) = delete;

    /// Runs `work(*this)` in one transaction. Whatever it or the commit throws leaves the file as
    /// it was before; where that cannot be made sure of the failure says so, and nothing is stored
    /// until it is. `lastId` is the newest row's after it, 0 when that is none of this transaction.
    template <class Work>
    void transact(Work const& work, long lastId = 0) {
        change(
            [&] {
                begin_.run();
                try {
                    work(*this);
                    commit_.run();
                } catch (...) {
                    database_.rollBack();
                    throw;
                }
            },
            lastId);
    }

    /// A transaction of one row only, which costs least.
    void insertAlone(LogRow const& row, std::string const& time);

    /// Stores a row of some size and takes it away again, in one transaction: whether a message
    /// could be stored, without a message. Before it a write-ahead file that was lost is made anew,
    /// when nothing of it is missing.
    void tryOut();

    /// Whether a write has failed, or a file was missed, since `tryOut` worked last. Any thread.
    bool hasFailed() const { return hasFailed_; }

    /// Are the files in their places? What is wrong is there for `takeFinding`.
    bool watchFiles();

    /// What `watchFiles` found, once; empty when it is nothing new.
    std::string takeFinding();

    /// Everything that was stored is in the file itself, and the write-ahead file not needed, if
    /// this many transactions are all that there were.
    void movedAhead(std::uint64_t changes);

    // Inside of a transaction, and while the log is being opened.

    Database& database() { return database_; }
    RowWriter& rows() { return rows_; }
    void setMeta(std::string_view name, std::int64_t value);

    std::int64_t meta(std::string_view name);

    /// How many transactions there were. Any thread.
    std::uint64_t changes() const { return changes_.load(std::memory_order_relaxed); }

private:
    template <class Write>
    void change(Write const& write, long lastId) {
        std::lock_guard const lock(mutex_);
        try {
            requireFiles();
            write();
        } catch (LogFailure const& failure) {
            hasFailed_ = true;
            takeBack(failure);
            throw;
        } catch (...) {
            ahead_->undo();
            throw;
        }
        accept(lastId);
    }

    void requireFiles();
    bool look();
    void takeBack(LogFailure const& failure);
    void accept(long lastId);
    bool testify(AheadFile::Place ahead);
    bool moveAhead(char const* how);
    void rescueAhead();
    void restoreAhead();
    bool isAheadLost() const;

    FairLock mutex_;
    LogWitness witness_; // the first to look, before the file is opened
    bool const isDurable_;
    Database database_;
    std::shared_ptr<AheadFile> const ahead_;
    Statement begin_;
    Statement commit_;
    RowWriter rows_;
    std::int64_t const identity_;
    long lastId_;
    FileWatch log_;
    std::string finding_;      ///< what is wrong with the files; empty when nothing is
    std::string news_;         ///< the same, while nobody was told
    bool isLost_ = false;      ///< what is wrong can never be right again
    bool isMoved_ = false;     ///< all that was stored is in the log itself
    bool isTestified_ = false; ///< the witness knows of the newest commit
    std::chrono::steady_clock::time_point nextLook_;
    std::atomic<std::uint64_t> changes_ = 0;
    std::atomic<bool> hasFailed_ = false;
};

} // namespace zan::server

#endif
