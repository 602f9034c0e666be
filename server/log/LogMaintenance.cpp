#include "server/log/LogMaintenance.h"

#include <sqlite3.h>

namespace zan::server {

namespace {

// Without a commit for so long nobody is in a hurry.
constexpr long long idleMillis = 100;

// More rows than this make a chain wait too long; they are indexed even while others work.
constexpr long mostRowsWaiting = 20'000;
constexpr std::chrono::milliseconds longestIndexing{200};

// So many changes that the writer would soon have to move their pages itself.
constexpr std::uint64_t mostChangesWaiting = 1'000;

constexpr std::chrono::seconds trialInterval{1};

template <class Work>
void attempt(Work const& work) {
    try {
        work();
    } catch (LogFailure const&) {
        return;
    }
}

} // namespace

void LogMaintenance::run() {
    std::unique_lock const lock(mutex_, std::try_to_lock);
    if (!lock) {
        return;
    }
    attempt([&] { parts_.marks.flush(); });
    attempt([&] { indexOrders(); });
    if (parts_.connection.watchFiles()) {
        attempt([&] { movePages(); });
    }
    parts_.reserve.renew();
}

bool LogMaintenance::worksAgain() {
    std::lock_guard const lock(mutex_);
    auto const now = std::chrono::steady_clock::now();
    if (!parts_.connection.hasFailed()) {
        nextTrial_.reset();
        return false;
    }
    if (!nextTrial_) {
        // Whoever the failure hit tells of it first.
        nextTrial_ = now + trialInterval;
    }
    if (now < *nextTrial_) {
        return false;
    }
    nextTrial_ = now + trialInterval;
    attempt([&] { parts_.connection.tryOut(); });
    return !parts_.connection.hasFailed();
}

bool LogMaintenance::isIdle() const {
    return nowMillis() - parts_.writer.lastCommit() >= idleMillis;
}

void LogMaintenance::indexOrders() {
    ReadPool::Reader const reader(parts_.readers);
    auto const end = std::chrono::steady_clock::now() + longestIndexing;
    while (std::chrono::steady_clock::now() < end) {
        long const waiting = parts_.writer.lastId() - parts_.orders.reached();
        if (!isIdle() && waiting <= mostRowsWaiting) {
            return;
        }
        if (!parts_.orders.takeStep(*reader)) {
            return;
        }
    }
}

// Pages of the write-ahead log go into the file itself, while the writer goes on.
void LogMaintenance::movePages() {
    std::uint64_t const changes = parts_.connection.changes();
    if (changes == movedChanges_ || (!isIdle() && changes - movedChanges_ < mostChangesWaiting)) {
        return;
    }
    if (!mover_) {
        mover_.emplace(parts_.connection.database().file(), Database::Access::Write);
        // A connection knows of the write-ahead log once it has read.
        mover_->number("SELECT count(*) FROM meta");
    }
    int pages = 0;
    int moved = 0;
    if (sqlite3_wal_checkpoint_v2(mover_->handle(), nullptr, SQLITE_CHECKPOINT_PASSIVE, &pages,
                                  &moved) != SQLITE_OK) {
        mover_->fail();
    }
    if (pages == moved) {
        movedChanges_ = changes;
        parts_.connection.movedAhead(changes);
    }
}

} // namespace zan::server
