#include "server/engine/MessageHistory.h"

#include "errors/ZANInvalidMessageException.h"
#include "errors/ZANPersistentStorageException.h"
#include "server/engine/EngineErrors.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace zan::server {

namespace {

constexpr long highestStream = 4;

int asNumber(long number) {
    constexpr long highest = std::numeric_limits<int>::max();
    return static_cast<int>(std::clamp(number, 0L, highest));
}

} // namespace

MessageHistory::MessageHistory(MessageLog& log, ConnectionSettings const& settings,
                               CompiledDictionary const& dictionary,
                               std::function<void(std::string const&)> noteFailure)
    : log_(log), settings_(settings), dictionary_(dictionary),
      noteFailure_(std::move(noteFailure)) {}

void MessageHistory::failStorage(std::string const& text) const {
    noteFailure_(text);
    fail<ZANPersistentStorageException>("connection " + settings_.name + ": " + text);
}

void MessageHistory::failInput(std::string const& text) const {
    fail<ZANInvalidMessageException>("connection " + settings_.name + ": " + text);
}

int MessageHistory::checked(long stream) const {
    if (stream < -1 || stream > highestStream) {
        failInput("stream " + std::to_string(stream) +
                  ": there is no such stream; 0 to 4, or -1 for all, would be right");
    }
    return static_cast<int>(stream);
}

MessageLog::Sink MessageHistory::into(Messages& messages, Showing showing) const {
    return [this, &messages, showing](FixEntry&& entry) {
        messages.push_back(modelOf(entry, dictionary_, showing));
    };
}

void MessageHistory::read(LogQuery const& query, Messages& messages) const {
    checked(query.stream);
    guarded([&] { log_.read(query, into(messages, Showing::AsStored)); });
}

void MessageHistory::readChain(std::vector<int> const& ids,
                               std::vector<std::string> const& clientOrderIds, bool newestFirst,
                               Messages& messages) const {
    guarded([&] {
        log_.readChain(ids, clientOrderIds, newestFirst, into(messages, Showing::AsStored));
    });
}

void MessageHistory::readForResend(long first, long last, std::string const& where,
                                   Messages& messages) const {
    guarded([&] {
        log_.readSent(asNumber(first), asNumber(last), where, into(messages, Showing::ForResend));
    });
}

std::vector<int> MessageHistory::ids(long stream, bool newestFirst) const {
    return guarded([&] { return log_.ids(checked(stream), newestFirst); });
}

void MessageHistory::readTable(long stream, std::string const& columns, std::string const& where,
                               std::string const& orderBy, LogTable& table) const {
    guarded([&] { log_.readTable(checked(stream), columns, where, orderBy, table); });
}

std::vector<FixOutgoing> MessageHistory::toResend(infra::Time const& from, infra::Time const& to,
                                                  std::string const& filter) const {
    LogQuery query;
    query.stream = static_cast<int>(FixStream::appOut);
    query.millis = {from.getMillis(), to.getMillis()};
    query.where = filter;
    std::vector<FixOutgoing> messages;
    guarded([&] {
        log_.read(query, [&](FixEntry&& entry) {
            if (entry.origin == FixOrigin::wire) {
                messages.push_back(resendOf(entry, dictionary_));
            }
        });
    });
    return messages;
}

long MessageHistory::update(long stream, std::string const& assignments, std::string const& where,
                            std::string const& user) {
    return guarded([&] {
        return assignments == "undo" ? log_.undo(checked(stream), where, user)
                                     : log_.update(checked(stream), assignments, where, user);
    });
}

long MessageHistory::remove(long stream, std::string const& where, std::string const& user) {
    return guarded([&] { return log_.remove(checked(stream), where, user); });
}

long MessageHistory::insert(Messages const& messages, std::string const& user) {
    return guarded([&] {
        std::vector<FixEntry> entries;
        for (counted_ptr<ZANMessage> const& message : messages) {
            entries.push_back(insertedEntry(fieldsOf(message), settings_, dictionary_));
        }
        return log_.insert(std::move(entries), user);
    });
}

} // namespace zan::server
