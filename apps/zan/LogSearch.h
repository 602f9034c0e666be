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

/// Ends included.
struct IdRange {
    int first = 0;
    int last = std::numeric_limits<int>::max();
};

struct LogSearch {
    std::string connection;
    long stream = -1;
    IdRange ids;
    /// Beginnings of times, see `timeBeginning`; empty: no limit. What begins with `to` is
    /// included.
    std::string from;
    std::string to;
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

/// The range that a text such as `100-200`, `100-`, `-200` or `150` means. Throws `UsageError`.
IdRange idRangeOf(std::string const& text);

/// Lets the engine look at an expression alone, so that what it says of a wrong one is about the
/// text that was given. Throws what the engine throws.
void checkExpression(Session& session, std::string const& connection,
                     std::string const& expression);

/// Gets the entries one after the other.
using RowSink = std::function<void(MessageRow const&)>;

/// Returns how many there were. Throws `Interruption`, and what the engine throws.
long search(Session& session, LogSearch const& what, Interrupt const& interrupt,
            RowSink const& sink);

/// The entries of one question to the engine: those of the stream of which `where` is true, sorted
/// by ids unless `orderBy` says otherwise. Nothing else of the search counts.
std::vector<MessageRow> rowsWhere(Session& session, LogSearch const& what,
                                  std::string const& where);

} // namespace zan::cli

#endif
