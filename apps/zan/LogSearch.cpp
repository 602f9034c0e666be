#include "apps/zan/LogSearch.h"

#include "apps/zan/ExitCodes.h"
#include "apps/zan/Progress.h"
#include "infra/Time.h"

#include <algorithm>
#include <regex>

namespace zan::cli {

namespace {

// How many messages are asked for at a time.
constexpr std::size_t atATime = 5000;

struct IdRange {
    int first;
    int last;
};

std::string between(IdRange const& range) {
    return "id >= " + std::to_string(range.first) + " AND id <= " + std::to_string(range.last);
}

// The ids of the log in pieces, in the order in which they are wanted. The first and the last piece
// are open at their ends: notes without a message may lie beyond the messages.
std::vector<IdRange> pieces(std::vector<int> const& ids, bool newestFirst) {
    std::vector<IdRange> ranges;
    for (std::size_t at = 0; at < ids.size(); at += atATime) {
        bool const isLast = at + atATime >= ids.size();
        ranges.push_back({at == 0 ? 0 : ids[at],
                          isLast ? std::numeric_limits<int>::max() : ids[at + atATime] - 1});
    }
    if (ranges.empty()) {
        ranges.push_back({0, std::numeric_limits<int>::max()});
    }
    if (newestFirst) {
        std::ranges::reverse(ranges);
    }
    return ranges;
}

// Sorting is the engine's, over everything at once.
long searchSorted(Session& session, LogSearch const& what, RowSink const& sink) {
    std::vector<MessageRow> rows = rowsWhere(session, what, what.where);
    if (what.newestFirst) {
        std::ranges::reverse(rows);
    }
    long count = 0;
    for (MessageRow const& row : rows) {
        if (count == what.limit) {
            break;
        }
        sink(row);
        ++count;
    }
    return count;
}

} // namespace

std::string allOf(std::vector<std::string> const& conditions) {
    std::string all;
    for (std::string const& condition : conditions) {
        if (!condition.empty()) {
            all += (all.empty() ? "(" : " AND (") + condition + ")";
        }
    }
    return all;
}

std::string idCondition(std::string const& range) {
    static std::regex const pattern("(\\d{0,9})(-?)(\\d{0,9})");
    std::smatch parts;
    bool const isRange = std::regex_match(range, parts, pattern) && range != "-" &&
                         !range.empty() && (parts.length(2) > 0 || parts.length(3) == 0);
    if (!isRange) {
        throw UsageError("\"" + range +
                         "\" is no range of ids; 17, 100-200, 100- or -200 would be right");
    }
    if (parts.length(2) == 0) {
        return "id = " + range;
    }
    return allOf({parts.length(1) > 0 ? "id >= " + parts.str(1) : "",
                  parts.length(3) > 0 ? "id <= " + parts.str(3) : ""});
}

bool isTime(std::string const& text) {
    static std::regex const pattern("\\d{8}(-\\d\\d(:\\d\\d(:\\d\\d(\\.\\d{1,3})?)?)?)?|"
                                    "\\d\\d:\\d\\d(:\\d\\d(\\.\\d{1,3})?)?");
    return std::regex_match(text, pattern);
}

std::string timeBeginning(std::string const& text) {
    if (!isTime(text)) {
        throw UsageError("\"" + text +
                         "\" is no time; 20261121, 20261121-09:30:00.123 or, for "
                         "today, 09:30 would be right (UTC)");
    }
    constexpr std::size_t day = 8;
    bool const hasDay = text.find(':') != 2;
    return hasDay ? text : infra::Time::now().toString().substr(0, day) + "-" + text;
}

std::string fromCondition(std::string const& time) {
    return time.empty() ? "" : "time >= '" + timeBeginning(time) + "'";
}

// Every time that begins so comes before the beginning with a tilde behind it.
std::string toCondition(std::string const& time) {
    return time.empty() ? "" : "time <= '" + timeBeginning(time) + "~'";
}

std::vector<MessageRow> rowsWhere(Session& session, LogSearch const& what,
                                  std::string const& where) {
    std::vector<std::vector<std::string>> table;
    session.engine().retrieveMessageLogData(session.ticket(), what.connection, what.stream,
                                            messageColumns, where,
                                            what.orderBy.empty() ? "id" : what.orderBy, table);
    std::vector<MessageRow> rows;
    for (std::size_t row = 1; row < table.size(); ++row) {
        rows.push_back(messageRow(table[row]));
    }
    return rows;
}

long search(Session& session, LogSearch const& what, Interrupt const& interrupt,
            RowSink const& sink) {
    if (!what.orderBy.empty()) {
        return searchSorted(session, what, sink);
    }
    std::vector<int> const ids =
        session.engine().getMessageIds(session.ticket(), what.connection, what.stream, false);
    std::vector<IdRange> const ranges = pieces(ids, what.newestFirst);
    Progress progress("searched", ranges.size());
    long count = 0;
    for (IdRange const& range : ranges) {
        interrupt.check();
        std::vector<MessageRow> rows =
            rowsWhere(session, what, allOf({between(range), what.where}));
        if (what.newestFirst) {
            std::ranges::reverse(rows);
        }
        for (MessageRow const& row : rows) {
            if (count == what.limit) {
                return count;
            }
            sink(row);
            ++count;
        }
        progress.step();
    }
    return count;
}

} // namespace zan::cli
