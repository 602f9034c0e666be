/// Which entries of a message log are wanted, and reading them piece by piece, so that a long log
/// needs little memory and Ctrl-C is obeyed.
///
/// Threads: one at a time.
#ifndef ZANENGINE_APPS_ZAN_LOGSEARCH_H
#define ZANENGINE_APPS_ZAN_LOGSEARCH_H

#include "apps/zan/MessageRow.h"
#include "apps/zan/Session.h"

#include <functional>
#include <limits>
#include <string>
#include <vector>

namespace zan::cli {

struct LogSearch {
    std::string connection;
    long stream = -1;
    /// An expression of the engine's; empty: all.
    std::string where;
    /// How many entries at most.
    long limit = std::numeric_limits<long>::max();
    /// The last ones of them, not the first; newest first where the order is by id.
    bool newestFirst = false;
    /// An expression of the engine's; empty: by id.
    std::string orderBy;
};

/// The conditions that are not empty, all of which have to hold.
std::string allOf(std::vector<std::string> const& conditions);

/// `id >= from` and `id <= to` for a text such as `100-200`, `100-`, `-200` or `150`. Throws
/// `UsageError`.
std::string idCondition(std::string const& range);

/// The beginning of a time as the log writes it, `20261121-09:30`; a time without a day is of
/// today, UTC. Throws `UsageError` for anything else.
std::string timeBeginning(std::string const& text);

/// From the beginning of that time on, and to its end.
std::string fromCondition(std::string const& time);
std::string toCondition(std::string const& time);

/// Whether a text is a time for these, and no number.
bool isTime(std::string const& text);

/// Gets the entries one after the other.
using RowSink = std::function<void(MessageRow const&)>;

/// Returns how many there were. Throws `Interruption`, and what the engine throws.
long search(Session& session, LogSearch const& what, Interrupt const& interrupt,
            RowSink const& sink);

/// The entries of one question to the engine, by ids unless `orderBy` says otherwise.
std::vector<MessageRow> rowsWhere(Session& session, LogSearch const& what,
                                  std::string const& where);

} // namespace zan::cli

#endif
