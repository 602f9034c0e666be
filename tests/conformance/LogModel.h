/// The message log as plain rows, and the answers that a search by hand gives.
#ifndef ZANENGINE_CONFORMANCE_LOGMODEL_H
#define ZANENGINE_CONFORMANCE_LOGMODEL_H

#include "conformance/Trial.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace zan::conformance {

using Ids = std::vector<int>;

struct LogRow {
    int id = 0;
    std::string time;
    int stream = 0;
    std::string type;
    int seq = 0;
    std::string sender;
    std::string target;
    std::string text;
    std::string note;

    /// The first value of a tag in the message's text.
    std::optional<std::string> tag(int number) const;
};

/// What a retrieval asks for.
struct Question {
    long stream = -1;
    std::function<bool(LogRow const&)> holds = [](LogRow const&) { return true; };
    bool newestFirst = false;
};

class LogModel {
public:
    /// Sends orders of many kinds, waits for what comes back, logs out, and reads the whole log as
    /// a table.
    static LogModel filled(Trial& trial);

    /// Reads the log of the tested connection as a table.
    explicit LogModel(Trial& trial);

    /// The rows that hold a message, oldest first.
    std::vector<LogRow> const& messages() const { return messages_; }

    LogRow const& row(int id) const;

    /// The ids of the rows that the question asks for, in the order that it asks for.
    Ids answer(Question const& question) const;

    /// The ids of all messages of the orders that these messages or client order ids belong to.
    Ids chain(Ids const& ids, std::vector<std::string> const& clientOrderIds) const;

private:
    std::vector<LogRow> messages_;
};

/// The numbers of messages that were retrieved.
Ids idsOf(Messages const& messages);

} // namespace zan::conformance

#endif
