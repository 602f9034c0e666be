#include "apps/zan/LogSearch.h"

#include "apps/zan/ExitCodes.h"
#include "apps/zan/Progress.h"

#include <algorithm>

namespace zan::cli {

namespace {

// How many messages are asked for at a time.
constexpr std::ptrdiff_t atATime = 5000;

std::string conditionOf(IdRange const& range) {
    return allOf({range.first > 0 ? "id >= " + std::to_string(range.first) : "",
                  range.last < std::numeric_limits<int>::max()
                      ? "id <= " + std::to_string(range.last)
                      : ""});
}

// Everything that begins with a time comes before that time with a tilde behind it.
std::string endOf(std::string const& time) {
    return time + "~";
}

std::string conditionOf(LogSearch const& what) {
    return allOf({conditionOf(what.ids), what.from.empty() ? "" : "time >= '" + what.from + "'",
                  what.to.empty() ? "" : "time <= '" + endOf(what.to) + "'", what.where});
}

bool isShortNumber(std::string const& text) {
    return text.size() < 10 && text.find_first_not_of("0123456789") == std::string::npos;
}

std::string timeOf(Session& session, LogSearch const& what, int id) {
    std::vector<std::vector<std::string>> table;
    session.engine().retrieveMessageLogData(session.ticket(), what.connection, -1, "time",
                                            "id = " + std::to_string(id), "", table);
    return table.size() > 1 ? table[1].at(0) : "";
}

// The ids of the log in pieces, in the order in which they are wanted. Notes without a message may
// lie between the messages, before them and behind them, so the pieces leave no room between them.
class Pieces {
public:
    Pieces(Session& session, LogSearch const& what)
        : ids_(session.engine().getMessageIds(session.ticket(), what.connection, what.stream,
                                              false)) {
        auto begin = std::ranges::lower_bound(ids_, what.ids.first);
        auto end = std::upper_bound(begin, ids_.end(), what.ids.last);
        // Times never fall with rising ids, so a few looks find where a time begins.
        if (!what.from.empty()) {
            begin = std::partition_point(
                begin, end, [&](int id) { return timeOf(session, what, id) < what.from; });
        }
        if (!what.to.empty()) {
            end = std::partition_point(
                begin, end, [&](int id) { return timeOf(session, what, id) <= endOf(what.to); });
        }
        divide(begin, end);
        if (what.newestFirst) {
            std::ranges::reverse(ranges_);
        }
    }

    std::vector<IdRange> const& ranges() const { return ranges_; }

private:
    using Id = std::vector<int>::const_iterator;

    void divide(Id begin, Id end) {
        int const last = end == ids_.end() ? std::numeric_limits<int>::max() : *end - 1;
        int first = begin == ids_.begin() ? 0 : *(begin - 1) + 1;
        for (; end - begin > atATime; begin += atATime) {
            ranges_.push_back({first, *(begin + atATime) - 1});
            first = *(begin + atATime);
        }
        ranges_.push_back({first, last});
    }

    std::vector<int> const ids_;
    std::vector<IdRange> ranges_;
};

// Sorting is the engine's, over everything at once.
long searchSorted(Session& session, LogSearch const& what, RowSink const& sink) {
    std::vector<MessageRow> rows = rowsWhere(session, what, conditionOf(what));
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

IdRange idRangeOf(std::string const& text) {
    std::size_t const dash = text.find('-');
    std::string const first = text.substr(0, dash);
    std::string const last = dash == std::string::npos ? first : text.substr(dash + 1);
    if (!isShortNumber(first) || !isShortNumber(last) || (first.empty() && last.empty())) {
        throw UsageError("\"" + text +
                         "\" is no range of ids; 17, 100-200, 100- or -200 would be right");
    }
    IdRange range;
    range.first = first.empty() ? range.first : std::stoi(first);
    range.last = last.empty() ? range.last : std::stoi(last);
    return range;
}

// No entry has the id 0, so nothing is looked through.
void checkExpression(Session& session, std::string const& connection,
                     std::string const& expression) {
    std::vector<counted_ptr<ZANMessage>> none;
    session.engine().retrieveMessagesByIdRange(session.ticket(), connection, none, -1, 0, 0,
                                               expression, false);
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
    checkExpression(session, what.connection, what.where);
    if (!what.orderBy.empty()) {
        return searchSorted(session, what, sink);
    }
    Pieces const pieces(session, what);
    Progress progress("searched", pieces.ranges().size());
    std::string const condition = conditionOf(what);
    long count = 0;
    for (IdRange const& range : pieces.ranges()) {
        interrupt.check();
        std::vector<MessageRow> rows =
            rowsWhere(session, what, allOf({conditionOf(range), condition}));
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
