/// What was, on one connection: its message log as applications ask for it.
///
/// Every operation throws `ZANPersistentStorageException` when the log cannot be read or written,
/// and `ZANInvalidMessageException` for a stream that does not exist and for an expression that
/// cannot be used, with the position and the reason. Streams are the numbers 0 to 4, -1 is all.
///
/// Threads: any.
#ifndef ZANENGINE_SERVER_ENGINE_MESSAGEHISTORY_H
#define ZANENGINE_SERVER_ENGINE_MESSAGEHISTORY_H

#include "infra/Time.h"
#include "infra/counted_ptr.h"
#include "message/ZANMessage.h"
#include "server/config/SessionFile.h"
#include "server/engine/StoredMessage.h"
#include "server/log/MessageLog.h"
#include "server/wire/FieldText.h"

#include <functional>
#include <string>
#include <vector>

namespace zan::server {

using Messages = std::vector<counted_ptr<ZANMessage>>;

class MessageHistory {
public:
    /// `noteFailure` is told when the log fails.
    MessageHistory(MessageLog& log, ConnectionSettings const& settings,
                   CompiledDictionary const& dictionary,
                   std::function<void(std::string const&)> noteFailure);

    // These append to the vector.

    void read(LogQuery const& query, Messages& messages) const;
    void readChain(std::vector<int> const& ids, std::vector<std::string> const& clientOrderIds,
                   bool newestFirst, Messages& messages) const;
    void readForResend(long first, long last, std::string const& where, Messages& messages) const;

    std::vector<int> ids(long stream, bool newestFirst) const;
    void readTable(long stream, std::string const& columns, std::string const& where,
                   std::string const& orderBy, LogTable& table) const;

    /// What was sent in that time and passes the filter, ready to be sent again.
    std::vector<FixOutgoing> toResend(infra::Time const& from, infra::Time const& to,
                                      std::string const& filter) const;

    // Edits; they return how many entries they touched. The assignments `undo` take back what the
    // audit tells, of which `where` is true.

    long update(long stream, std::string const& assignments, std::string const& where,
                std::string const& user);
    long remove(long stream, std::string const& where, std::string const& user);
    long insert(Messages const& messages, std::string const& user);

    /// Calls `action`, and turns what it throws for the log into what applications catch.
    template <class Action>
    auto guarded(Action action) const;

private:
    [[noreturn]] void failStorage(std::string const& text) const;
    [[noreturn]] void failInput(std::string const& text) const;
    int checked(long stream) const;
    MessageLog::Sink into(Messages& messages, Showing showing) const;

    MessageLog& log_;
    ConnectionSettings const& settings_;
    CompiledDictionary const& dictionary_;
    std::function<void(std::string const&)> const noteFailure_;
};

template <class Action>
auto MessageHistory::guarded(Action action) const {
    try {
        return action();
    } catch (BadExpression const& e) {
        failInput(e.what());
    } catch (MalformedMessage const& e) {
        failInput(e.what());
    } catch (std::runtime_error const& e) {
        failStorage(e.what());
    }
}

} // namespace zan::server

#endif
