/// Lets QuickFIX's session object work on a store of ours, one transaction at a time.
#ifndef ZANENGINE_SERVER_SESSIONS_QUICKFIXSTORE_H
#define ZANENGINE_SERVER_SESSIONS_QUICKFIXSTORE_H

#include "server/sessions/FixSessionStore.h"
#include "server/sessions/NumberRanges.h"

#include <functional>
#include <string>
#include <vector>

#include <quickfix/MessageStore.h>

namespace zan {
namespace server {

/// Everything is for the thread that has the store's turn. The first failure of the storage makes
/// the transaction fail as a whole; QuickFIX hears of it as an IOException where it asks.
class QuickFixStore : public FIX::MessageStore, public FIX::MessageStoreFactory {
public:
    /// The clock tells the time of day, in milliseconds since 1970-01-01 00:00:00 UTC.
    QuickFixStore(FixSessionStore& store, std::function<long long()> clock)
        : store_(store), clock_(std::move(clock)) {}
    ~QuickFixStore() override;
    QuickFixStore(QuickFixStore const&) = delete;
    QuickFixStore& operator=(QuickFixStore const&) = delete;

    /// To be called with a new turn, and after each end of a transaction within a turn.
    void begin();

    /// Returns the id, 0 when the transaction has failed.
    long append(FixEntry entry);

    /// Why the transaction has failed; empty while it has not.
    std::string const& failure() const { return failure_; }

    /// Has it failed because there is no further number for a message out?
    bool isUsedUp() const { return isUsedUp_; }

    // Changes that are not QuickFIX's: false when the transaction has failed.

    /// Both numbers are 1.
    bool beginNumbering();
    bool setNumbers(FixNumbers numbers);
    bool setNumbering(FixNumbering numbering);
    /// Whether Logons ask the counterparty to begin with 1 too.
    bool askForReset(bool on);
    FixNumbering numbering() const { return store_.numbering(); }

    /// Which numbers QuickFIX cannot set; `both` keeps it from a reset, too.
    enum class Held { nothing, incoming, both };
    class Hold {
    public:
        explicit Hold(QuickFixStore& store, Held held = Held::both) : store_(store) {
            store_.held_ = held;
        }
        ~Hold() { store_.held_ = Held::nothing; }
        Hold(Hold const&) = delete;
        Hold& operator=(Hold const&) = delete;

    private:
        QuickFixStore& store_;
    };

    /// QuickFIX compares this time with the one that it is given: where they are the same it finds
    /// no border of a session between them, whose numbers it would reset.
    void setCreationTime(FIX::UtcTimeStamp const& time) { creationTime_ = time; }

    /// False when the storage failed; then everything is as it was.
    bool commit(std::vector<FixEntry>& entries);
    void rollBack();

    FixNumbers const& current() const { return numbers_; }

    /// Was a number used since `forgetNumber`? Then the message that goes out has it and is new;
    /// other messages are sent again.
    bool usedNumber() const { return usedNumber_; }
    void forgetNumber() { usedNumber_ = false; }

    /// Reads what `get` will be asked for, up to so many bytes; the numbers before `from` are known
    /// to be a gap. Returns the last number that is covered by what was read. Throws
    /// FIX::IOException.
    int fetch(NumberRange range, int from, std::size_t mostBytes);
    /// Drops what follows the last application message that was read; returns the number of that
    /// one, 0 where there is none.
    int dropTail();

    /// The message that was sent under this number, behind the new header that QuickFIX has made
    /// for it.
    std::string repetition(int number, std::string const& head) const;

    bool set(int, std::string const&) throw(FIX::IOException) override { return true; }
    void get(int first, int last, std::vector<std::string>& messages) const
        throw(FIX::IOException) override;
    int getNextSenderMsgSeqNum() const throw(FIX::IOException) override { return numbers_.nextOut; }
    int getNextTargetMsgSeqNum() const throw(FIX::IOException) override { return numbers_.nextIn; }
    void setNextSenderMsgSeqNum(int number) throw(FIX::IOException) override;
    void setNextTargetMsgSeqNum(int number) throw(FIX::IOException) override;
    void incrNextSenderMsgSeqNum() throw(FIX::IOException) override;
    void incrNextTargetMsgSeqNum() throw(FIX::IOException) override;
    FIX::UtcTimeStamp getCreationTime() const throw(FIX::IOException) override {
        return creationTime_;
    }
    void reset() throw(FIX::IOException) override;
    void refresh() throw(FIX::IOException) override {}

    FIX::MessageStore* create(FIX::SessionID const&) override { return this; }
    void destroy(FIX::MessageStore*) override {}

private:
    template <typename Action>
    bool attempt(Action const& action);
    template <typename Action>
    void change(Action const& action);

    FixSessionStore& store_;
    std::function<long long()> const clock_;
    FixNumbers numbers_;
    FIX::UtcTimeStamp creationTime_;
    bool isChanged_ = false;
    Held held_ = Held::nothing;
    bool isUsedUp_ = false;
    bool usedNumber_ = false;
    mutable std::string failure_;
    NumberRange fetched_ = {0, -1};
    mutable std::vector<FixEntry> repeated_;
};

} // namespace server
} // namespace zan

#endif
