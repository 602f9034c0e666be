/// A store in memory that counts, and fails when a test says so.
#ifndef ZANENGINE_TESTS_SERVER_SESSIONS_WATCHEDSTORE_H
#define ZANENGINE_TESTS_SERVER_SESSIONS_WATCHEDSTORE_H

#include "server/sessions/MemoryStore.h"

#include <atomic>
#include <functional>
#include <stdexcept>

class WatchedStore : public zan::server::MemoryStore {
public:
    long append(zan::server::FixEntry entry) override {
        failWhen(failingAppends);
        return MemoryStore::append(std::move(entry));
    }
    std::vector<zan::server::FixEntry> sent(int first, int last, std::size_t mostBytes) override {
        failWhen(failingReads);
        return MemoryStore::sent(first, last, mostBytes);
    }
    std::vector<zan::server::FixEntry> commit() override {
        failWhen(failingCommits);
        ++commits;
        if (beforeCommit)
            beforeCommit();
        return MemoryStore::commit();
    }

    std::atomic<int> commits{0};
    /// So many of the next operations fail.
    std::atomic<int> failingAppends{0};
    std::atomic<int> failingReads{0};
    std::atomic<int> failingCommits{0};
    /// Called with the turn; to be set before the session starts.
    std::function<void()> beforeCommit;

private:
    static void failWhen(std::atomic<int>& count) {
        if (count > 0 && count-- > 0)
            throw std::runtime_error("the disk is full");
    }
};

#endif
