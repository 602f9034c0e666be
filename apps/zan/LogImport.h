/// Brings what QuickFIX has kept of a session into a message log, as if it had happened there.
///
/// Threads: one at a time.
#ifndef ZANENGINE_APPS_ZAN_LOGIMPORT_H
#define ZANENGINE_APPS_ZAN_LOGIMPORT_H

#include "apps/zan/QuickFixFiles.h"
#include "server/log/MessageLog.h"

#include <optional>
#include <set>
#include <string>

namespace zan::cli {

class LogImport {
public:
    /// `company` is the id of our own side (SenderCompID). With a store its messages are those that
    /// count as sent, and its numbers hold at the end.
    LogImport(server::MessageLog& log, std::string company, std::optional<FileStore> store);
    ~LogImport();
    LogImport(LogImport const&) = delete;
    LogImport& operator=(LogImport const&) = delete;

    /// The next message of QuickFIX's message log.
    void add(LoggedMessage const& message);

    /// Adds what is left of the store, sets the numbers, and makes all of it last.
    void finish();

    long entries() const { return entries_; }
    /// Messages that were left out: repetitions of what came in before, and what is no message of
    /// this session.
    long leftOut() const { return leftOut_; }
    server::FixNumbers numbers() const { return log_.numbers(); }

private:
    void beginStore();
    void addStored(int before);
    void addOut(LoggedMessage const& message, int number);
    void addIn(LoggedMessage const& message, int number);
    void append(LoggedMessage const& message, server::FixStream stream, server::FixOrigin origin,
                int number);
    void sendNumber(int number);
    void takeNumber(int number, std::string const& text);
    void commitSometimes();

    server::MessageLog& log_;
    std::string const company_;
    std::optional<FileStore> const store_;
    bool isStoreBegun_ = false;
    /// The last message of the store that was added.
    int lastStored_ = 0;
    /// What came in under the present numbering, from the next number on.
    std::set<int> cameIn_;
    bool hasIn_ = false;
    long entries_ = 0;
    long leftOut_ = 0;
};

} // namespace zan::cli

#endif
