/// The session's side of the log: one transaction at a time, held in memory until it is committed,
/// and the numbers that belong to it.
///
/// Threads: the one that has the turn; `numbers`, `lastId` and `commitFigures` any.
#ifndef ZANENGINE_SERVER_LOG_LOGWRITER_H
#define ZANENGINE_SERVER_LOG_LOGWRITER_H

#include "server/log/CommitTimes.h"
#include "server/log/LogClock.h"
#include "server/log/WriteConnection.h"

#include <atomic>
#include <functional>
#include <vector>

namespace zan::server {

class LogWriter {
public:
    /// Takes up the numbers where the newest row left them.
    explicit LogWriter(WriteConnection& connection);

    FixNumbers numbers() const { return numbers_.load(std::memory_order_relaxed); }
    void setNumbers(FixNumbers numbers);
    void reset();
    FixNumbering numbering() const { return open_.numbering; }
    void setNumbering(FixNumbering numbering) { open_.numbering = numbering; }
    long append(FixEntry entry);

    /// With the time that the entry or the numbering has, as far as times do not fall and are not
    /// in the future.
    long appendKept(FixEntry entry);
    void resetAt(long long millis);

    /// `extra` runs in the same transaction, after the rows were written.
    std::vector<FixEntry> commit(std::function<void(WriteConnection&)> const& extra = {});
    void rollBack();

    /// The newest row that was committed, 0 without one.
    long lastId() const { return lastId_.load(std::memory_order_acquire); }
    /// When it was committed, by the system's clock.
    long long lastCommit() const { return lastCommit_.load(std::memory_order_relaxed); }
    /// The first row of the numbering as it was committed.
    long numberingFirst() const { return numberingFirst_.load(std::memory_order_acquire); }

    /// The first row of the numbering, as the open transaction has it.
    long openNumberingFirst() const { return open_.numberingFirst; }
    std::vector<LogRow> const& openRows() const { return rows_; }

    /// Any thread.
    CommitFigures commitFigures() const { return times_.figures(); }

private:
    // What a transaction changes, and what it comes back to when it is rolled back.
    struct State {
        FixNumbers numbers;
        long lastId = 0;
        long long lastMillis = 0;
        long numberingFirst = 1;
        FixNumbering numbering;
    };

    long add(FixEntry&& entry, long long millis);
    void startNumbers();
    void addNoteOnNumbers();
    void write(std::function<void(WriteConnection&)> const& extra);
    bool isNewNumbering() const;

    WriteConnection& connection_;
    TimeWriter clock_;
    CommitTimes times_;
    State committed_;
    State open_;
    std::vector<LogRow> rows_;
    // The newest row still takes the numbers after it.
    bool isRowOpen_ = false;
    // The numbers were changed, and no row of the transaction says so.
    bool areNumbersLoose_ = false;
    std::atomic<FixNumbers> numbers_;
    std::atomic<long> lastId_;
    std::atomic<long> numberingFirst_;
    std::atomic<long long> lastCommit_ = 0;
};

} // namespace zan::server

#endif
