/// What a session needs kept for it: its numbers, and every message of both directions.
///
/// The numbers and the messages belong together: they are committed in one transaction, so that
/// whatever ends the process leaves them in step.
///
/// Threads: a store has one turn at a time (`lock`, `unlock`), and everything but `numbers` belongs
/// to the thread that has the turn. The turn comes before every other lock of a session.
#ifndef ZANENGINE_SERVER_SESSIONS_FIXSESSIONSTORE_H
#define ZANENGINE_SERVER_SESSIONS_FIXSESSIONSTORE_H

#include "server/sessions/FairLock.h"

#include <cstddef>
#include <limits>
#include <string>
#include <vector>

namespace zan {
namespace server {

/// The streams of a connection, under the numbers that applications know them by.
enum class FixStream {
    adminIn = 0,  ///< administrative messages of the counterparty
    adminOut = 1, ///< administrative messages to the counterparty
    appIn = 2,    ///< application messages of the counterparty
    appOut = 3,   ///< application messages to the counterparty
    resent = 4    ///< application messages to the counterparty that were sent again
};

/// How an entry came to be.
enum class FixOrigin {
    wire = 0,     ///< a message as it was on the wire, under a number of its own
    again = 1,    ///< a message of ours, sent again under the number that it had
    internal = 2, ///< posted by an application for the listeners, never on the wire
    inserted = 3, ///< put in by an edit of the log; listeners do not get it
    remark = 4    ///< kept for people: what the session refused, or a note without a message
};

/// One entry of the log.
struct FixEntry {
    long id = 0;          ///< within the connection: rising, never used twice; given by the store
    long long millis = 0; ///< since 1970-01-01 00:00:00 UTC, never falling; given by the store
    FixStream stream = FixStream::adminIn;
    FixOrigin origin = FixOrigin::wire;
    int seq = 0;      ///< the sequence number (tag 34), 0 where there is none
    std::string text; ///< the bytes of the message; empty for a note without a message
    std::string note; ///< for people
};

/// The numbers that the next message out and the next message in will carry. They fill one word, so
/// that a `std::atomic` of them takes no lock.
struct alignas(8) FixNumbers {
    int nextOut = 1;
    int nextIn = 1;
};

/// What is known about the numbering that the numbers belong to.
struct FixNumbering {
    long long began = 0;       ///< milliseconds since 1970-01-01 00:00:00 UTC
    bool asksForReset = false; ///< the counterparty was not yet made to begin with 1 too
};

class FixSessionStore {
public:
    virtual ~FixSessionStore();

    /// Waits for the turn, and gives it back. What was not committed by then is rolled back. Who
    /// has waited for a millisecond is not passed over any more.
    void lock() { lockUntil(FairLock::Clock::time_point::max()); }
    /// False when the turn was not free before the deadline.
    virtual bool lockUntil(FairLock::Clock::time_point deadline) = 0;
    virtual void unlock() = 0;

    /// The numbers as the open transaction has them, or as they were committed last. Any thread.
    virtual FixNumbers numbers() const = 0;

    // With the turn. The first change opens a transaction.

    virtual void setNumbers(FixNumbers numbers) = 0;

    /// A new numbering begins now: both numbers are 1, and nothing that was sent before counts as
    /// sent. Whether the counterparty is asked for a reset stays as it is.
    virtual void reset() = 0;

    virtual FixNumbering numbering() const = 0;
    virtual void setNumbering(FixNumbering numbering) = 0;

    /// Adds an entry and returns its id.
    virtual long append(FixEntry entry) = 0;

    /// The messages that were first sent under these numbers of the current numbering, in their
    /// order, also those of the open transaction; the last one is that with which their texts have
    /// `mostBytes` or more. Numbers that cannot be had, those of damaged entries too, are left out.
    /// Throws std::runtime_error when the storage fails.
    virtual std::vector<FixEntry> sent(int first, int last, std::size_t mostBytes) = 0;

    /// As many as there are.
    std::vector<FixEntry> sent(int first, int last) {
        return sent(first, last, std::numeric_limits<std::size_t>::max());
    }

    /// Makes the transaction last, and returns its entries in their order. Throws
    /// std::runtime_error when the storage fails; then everything is as it was before.
    virtual std::vector<FixEntry> commit() = 0;

    /// Everything is as it was before the transaction. Ids that were given come again.
    virtual void rollBack() = 0;

protected:
    FixSessionStore() = default;
    FixSessionStore(FixSessionStore const&) = delete;
    FixSessionStore& operator=(FixSessionStore const&) = delete;
};

} // namespace server
} // namespace zan

#endif
