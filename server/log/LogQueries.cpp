#include "server/log/LogQueries.h"

#include "server/log/TableColumns.h"

#include <algorithm>
#include <iterator>
#include <limits>

namespace zan::server {

namespace {

IdRange common(IdRange left, IdRange right) {
    return {std::max(left.first, right.first), std::min(left.second, right.second)};
}

IdRange idsOf(LogReader& reader, LogQuery const& query) {
    IdRange ids(1, reader.lastId());
    if (query.ids) {
        ids = common(ids, *query.ids);
    }
    if (query.millis) {
        ids = common(ids, reader.idsOf(*query.millis));
    }
    return ids;
}

bool isBlank(std::string const& expression) {
    return CallersSql(expression).isBlank();
}

bool isToBeSeen(LogRow const& row, int stream) {
    return !row.isHidden && !row.entry.text.empty() &&
           (stream == allStreams || static_cast<int>(row.entry.stream) == stream);
}

bool isSentInRange(LogRow const& row, int first, int last) {
    return !row.isHidden && isSent(row.entry) && row.entry.stream != FixStream::adminOut &&
           row.entry.seq >= first && row.entry.seq <= last;
}

} // namespace

void LogQueries::read(LogQuery const& query, Sink const& sink) const {
    ReadPool::Reader const pooled(pool_);
    LogReader reader(*pooled);
    IdRange const ids = idsOf(reader, query);
    if (isBlank(query.where) && isBlank(query.orderBy)) {
        readPlain(reader, query, ids, sink);
        return;
    }
    SearchTerms terms;
    terms.stream = query.stream;
    terms.ids = ids;
    terms.idSet = query.idSet ? &*query.idSet : nullptr;
    terms.where = query.where;
    terms.orderBy = query.orderBy;
    terms.newestFirst = query.newestFirst;
    RowSearch search(pooled->guard(), terms);
    while (search.next()) {
        sink(std::move(reader.row(search.key())->entry));
    }
}

void LogQueries::readPlain(LogReader& reader, LogQuery const& query, IdRange ids,
                           Sink const& sink) {
    if (query.idSet) {
        readSet(reader, query, ids, sink);
        return;
    }
    reader.messages(query.stream, ids, query.newestFirst,
                    [&](LogRow&& row) { sink(std::move(row.entry)); });
}

void LogQueries::readSet(LogReader& reader, LogQuery const& query, IdRange ids, Sink const& sink) {
    std::vector<int> wanted = *query.idSet;
    std::ranges::sort(wanted);
    wanted.erase(std::unique(wanted.begin(), wanted.end()), wanted.end());
    if (query.newestFirst) {
        std::ranges::reverse(wanted);
    }
    for (int const id : wanted) {
        if (id < ids.first || id > ids.second) {
            continue;
        }
        std::optional<LogRow> row = reader.row(id);
        if (row && isToBeSeen(*row, query.stream)) {
            sink(std::move(row->entry));
        }
    }
}

void LogQueries::readSent(int first, int last, std::string const& where, Sink const& sink) const {
    ReadPool::Reader const pooled(pool_);
    LogReader reader(*pooled);
    int const end = last > 0 ? last : std::numeric_limits<int>::max();
    auto const pass = [&](LogRow&& row) {
        if (isSentInRange(row, first, end)) {
            row.entry.text = row.wireText();
            sink(std::move(row.entry));
        }
        return true;
    };
    if (isBlank(where)) {
        reader.sent(reader.numberingFirst(), first, end, LogReader::Damaged::Throws, pass);
        return;
    }
    SearchTerms terms;
    terms.ids = reader.sentWithin(reader.numberingFirst(), first, end);
    terms.where = where;
    RowSearch search(pooled->guard(), terms);
    while (search.next()) {
        pass(std::move(*reader.row(search.key())));
    }
}

std::vector<int> LogQueries::ids(int stream, bool newestFirst) const {
    std::vector<int> found;
    ReadPool::Reader const pooled(pool_);
    LogReader(*pooled).ids(stream, newestFirst,
                           [&](long id) { found.push_back(static_cast<int>(id)); });
    return found;
}

void LogQueries::readTable(int stream, std::string const& columns, std::string const& where,
                           std::string const& orderBy, LogTable& table) const {
    TableColumns const wanted(columns);
    ReadPool::Reader const pooled(pool_);
    SearchTerms terms;
    terms.source = wanted.areOfAudit() ? RowSource::Audit : RowSource::Rows;
    terms.stream = stream;
    terms.where = where;
    terms.orderBy = orderBy;
    RowSearch search(pooled->guard(), terms);
    LogReader reader(*pooled);
    LogTable rows{wanted.names()};
    while (search.next()) {
        rows.push_back(wanted.pick(wanted.areOfAudit()
                                       ? auditRow(*pooled, search.key())
                                       : tableRowOf(reader.row(search.key())->entry)));
    }
    std::ranges::move(rows, std::back_inserter(table));
}

} // namespace zan::server
