/// The store of a session that was given none: everything is gone with the process.
#ifndef ZANENGINE_SERVER_SESSIONS_MEMORYSTORE_H
#define ZANENGINE_SERVER_SESSIONS_MEMORYSTORE_H

#include "server/sessions/FixSessionStore.h"

#include <atomic>
#include <cstddef>
#include <deque>
#include <mutex>

namespace zan {
namespace server {

/// Keeps the numbers, and of the messages the newest ones sent. Threads: as for every store.
class MemoryStore : public FixSessionStore {
public:
    /// The most messages that can be sent again, and the most bytes of them; older ones cannot be
    /// had any more.
    static std::size_t const mostSent = 10000;
    static std::size_t const mostSentBytes = 64 * 1024 * 1024;

    MemoryStore();
    ~MemoryStore() override;

    bool lockUntil(FairLock::Clock::time_point deadline) override {
        return turn_.lockUntil(deadline);
    }
    void unlock() override;
    FixNumbers numbers() const override { return shownNumbers_; }
    void setNumbers(FixNumbers numbers) override;
    void reset() override;
    FixNumbering numbering() const override { return open_.numbering; }
    void setNumbering(FixNumbering numbering) override { open_.numbering = numbering; }
    long append(FixEntry entry) override;
    using FixSessionStore::sent;
    std::vector<FixEntry> sent(int first, int last, std::size_t mostBytes) override;
    std::vector<FixEntry> commit() override;
    void rollBack() override;

private:
    void keep(FixEntry const& entry);

    struct State {
        FixNumbers numbers;
        long lastId = 0;
        long long lastMillis = 0;
        FixNumbering numbering;
    };

    FairLock turn_;
    std::atomic<FixNumbers> shownNumbers_;
    State committed_;
    State open_;
    bool wasReset_ = false;
    std::vector<FixEntry> entries_;
    std::size_t firstOfNumbering_ = 0;
    std::deque<FixEntry> sent_;
    std::size_t sentBytes_ = 0;
};

} // namespace server
} // namespace zan

#endif
