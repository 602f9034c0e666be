/// The message log of one connection: every message of both directions with the session's numbers,
/// the marks of guaranteed listeners, and the audit of edits, in one file.
///
/// Nothing of the database behind it shows here. Every operation throws `LogFailure` when the
/// storage fails, and `BadExpression` for an expression of a caller's that is wrong or takes too
/// long.
///
/// Beside the file lie two more: an index of orders (`.orders`), which is made anew when it is
/// lost, and a reserve of space (`.reserve`), which is given up so that a full disk can be cleared.
/// One process has a log at a time.
///
/// Threads: any. Reading holds nobody up, and sees what was committed when it began; what gets the
/// entries may use the log itself.
#ifndef ZANENGINE_SERVER_LOG_MESSAGELOG_H
#define ZANENGINE_SERVER_LOG_MESSAGELOG_H

#include "server/log/CommitTimes.h"
#include "server/sessions/FixSessionStore.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace zan::server {

/// The storage failed: full, broken, read-only ... The text tells the file and the reason.
class LogFailure : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// An expression that cannot be used. The text tells the position and the reason.
class BadExpression : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

struct LogSettings {
    std::string file;
    /// What was committed survives a power failure too, not just the end of the process.
    bool survivesPowerFailure = false;
    /// How long the database may work on one expression of a caller's.
    std::chrono::milliseconds longestSearch{10'000};
};

/// Which messages to read. Every condition that is set has to hold.
struct LogQuery {
    /// -1: all streams.
    int stream = -1;
    /// Ends included; milliseconds since 1970-01-01 00:00:00 UTC.
    std::optional<std::pair<std::int64_t, std::int64_t>> millis;
    /// Ends included.
    std::optional<std::pair<long, long>> ids;
    /// Nothing else than these.
    std::optional<std::vector<int>> idSet;
    /// Empty for all.
    std::string where;
    /// Empty: by id.
    std::string orderBy;
    /// Turns the order round.
    bool newestFirst = false;
};

/// How far a guaranteed listener has come in a stream: the highest id that was consumed.
struct LogMark {
    std::string subscriber;
    FixStream stream = FixStream::adminIn;
    int id = -1;
};

/// What the files of a log take on the disk, in bytes.
struct LogSizes {
    std::uintmax_t messages = 0; ///< the messages, also those on their way into the file
    std::uintmax_t orders = 0;   ///< the index of orders
    std::uintmax_t reserve = 0;  ///< the space that can be given up
};

using LogTable = std::vector<std::vector<std::string>>;

class MessageLog final : public FixSessionStore {
public:
    /// Gets the entries that were asked for, one after the other. What it throws ends the reading
    /// and passes on.
    using Sink = std::function<void(FixEntry&&)>;

    /// Opens the file, or makes it. Throws `WrongConfigurationException` for a file that is no log
    /// or was written by a newer version; an older version's is brought up.
    explicit MessageLog(LogSettings const& settings);
    ~MessageLog() override;

    // The session's side.

    bool lockUntil(FairLock::Clock::time_point deadline) override;
    void unlock() override;
    FixNumbers numbers() const override;
    void setNumbers(FixNumbers numbers) override;
    void reset() override;
    FixNumbering numbering() const override;
    void setNumbering(FixNumbering numbering) override;
    long append(FixEntry entry) override;
    using FixSessionStore::sent;
    std::vector<FixEntry> sent(int first, int last, std::size_t mostBytes) override;
    std::vector<FixEntry> commit() override;
    void rollBack() override;

    // Taking over what another program has kept, with the turn: like `append` and `reset`, but with
    // the time that the entry or the numbering has. Times never fall and are not in the future.

    long appendKept(FixEntry entry);
    void resetAt(long long millis);

    // Reading. Notes without a message are in the table form only.

    void read(LogQuery const& query, Sink const& sink) const;

    /// Every message of the orders that these ids or client order ids belong to, followed through
    /// ClOrdID (11), OrigClOrdID (41) and OrderID (37) in both directions. A message of many orders
    /// is part of each of them, and does not lead from one to the next.
    void readChain(std::vector<int> const& ids, std::vector<std::string> const& clientOrderIds,
                   bool newestFirst, Sink const& sink) const;

    /// The application messages first sent under these numbers of the current numbering, with the
    /// bytes that would be sent again; `last` 0: to the newest. `where` sees the entry as it is
    /// after edits.
    void readSent(int first, int last, std::string const& where, Sink const& sink) const;

    std::vector<int> ids(int stream, bool newestFirst) const;

    /// Appends rows of text: the names of the columns, then one row an entry. `columns` is a list
    /// with commas, empty for all of the log's; with one of the columns `edited`, `user` and
    /// `action` among them, or `audit` for all, the rows are those of the audit.
    void readTable(int stream, std::string const& columns, std::string const& where,
                   std::string const& orderBy, LogTable& table) const;

    /// The id of the newest entry, 0 when there is none.
    long lastId() const;

    /// The id of the newest message of a stream that listeners get, 0 when there is none. Looks
    /// through the log from its end, so it takes long where the stream has nothing new.
    long newestDelivered(FixStream stream) const;

    // Edits; `user` goes into the audit. They return how many entries they touched, notes without a
    // message included. Whatever is edited, the session goes on with what was on the wire.

    /// `assignments`: `note = <expression>` or `text = <expression>`, with a comma between them.
    long update(int stream, std::string const& assignments, std::string const& where,
                std::string const& user);
    long remove(int stream, std::string const& where, std::string const& user);
    /// Makes of each entry what it was before the oldest of its edits that `where`, an expression
    /// over the audit, is true of. What was deleted comes back under its id, and like an inserted
    /// entry, when the session had no need of it: listeners do not get it again.
    long undo(int stream, std::string const& where, std::string const& user);
    /// Takes the turn, so the caller must not have it. Of an entry its stream, number, text and
    /// note count.
    long insert(std::vector<FixEntry> entries, std::string const& user);

    // Marks of guaranteed listeners: the highest id that was consumed, -1 for none.

    int mark(std::string const& subscriber, FixStream stream) const;
    /// Never lowers a mark. It is seen at once, and lasts after `flushMarks` or the next
    /// `maintain`.
    void setMark(std::string const& subscriber, FixStream stream, int id);
    void resetMarks(std::string const& subscriber);
    std::vector<LogMark> marks() const;
    void flushMarks();

    // For operators. Nothing of this waits for the storage.

    CommitFigures commitFigures() const;
    LogSizes sizes() const;

    /// To be called every few hundred milliseconds: what can be done later, such as marks, the
    /// index of orders, the way from the write-ahead log into the file, the reserve of space. It
    /// holds nobody up. Failures wait for the next time.
    void maintain();

    /// What `maintain` found wrong with the files of the log, once; empty when it is nothing new.
    std::string takeFinding();

    /// True, once, when something could not be stored and the storage is found to work again, with
    /// no message needed for it. To be called after `maintain`; it tries the storage out once a
    /// second at most, and leaves nothing behind. What cannot be read does not count.
    bool worksAgain();

private:
    class Impl;
    std::unique_ptr<Impl> const impl_;
};

/// A caller's expression, ready to be asked about single entries that need not be in a log.
///
/// Threads: one at a time.
class EntryFilter {
public:
    /// Throws `BadExpression`. Empty lets everything through.
    explicit EntryFilter(std::string const& expression);
    ~EntryFilter();
    EntryFilter(EntryFilter const&) = delete;
    EntryFilter& operator=(EntryFilter const&) = delete;

    bool matches(FixEntry const& entry);

private:
    class Impl;
    std::unique_ptr<Impl> const impl_;
};

} // namespace zan::server

#endif
