#include "server/log/LogReader.h"

#include "server/log/LogClock.h"
#include "server/log/LogSchema.h"

#include <algorithm>
#include <limits>
#include <string>

namespace zan::server {

namespace {

std::string selectRows(std::string_view rest) {
    return "SELECT " + std::string(rowColumns) + " FROM messages WHERE " + std::string(rest);
}

std::string const& seenInStream() {
    static auto const& condition =
        *new std::string("(?3<0 OR stream=?3) AND length(text)>0 AND " + std::string(shownRows));
    return condition;
}

std::string numberOf(FixOrigin origin) {
    return std::to_string(static_cast<int>(origin));
}

std::string orderById(bool newestFirst) {
    return newestFirst ? " ORDER BY id DESC" : " ORDER BY id";
}

} // namespace

long LogReader::lastId() {
    Statement& newest = connection_.statement("SELECT id FROM messages ORDER BY id DESC LIMIT 1");
    StatementUse const use(newest);
    return newest.step() ? static_cast<long>(newest.number(0)) : 0;
}

long LogReader::newestDelivered(FixStream stream) {
    static std::string const sql = "SELECT id FROM messages WHERE stream=?1 AND " +
                                   std::string(shownRows) + " AND origin NOT IN (" +
                                   numberOf(FixOrigin::inserted) + "," +
                                   numberOf(FixOrigin::remark) + ") ORDER BY id DESC LIMIT 1";
    Statement& newest = connection_.statement(sql);
    StatementUse const use(newest);
    bool const isThere = newest.bind(1, static_cast<int>(stream)).step();
    return isThere ? static_cast<long>(newest.number(0)) : 0;
}

long LogReader::numberingFirst() {
    Statement& meta = connection_.statement(metaByName);
    StatementUse const use(meta);
    return static_cast<long>(readMeta(connection_.database(), meta, "numbering_first"));
}

std::optional<LogRow> LogReader::row(long id) {
    Statement& rows = connection_.statement(selectRows("id=?1"));
    StatementUse const use(rows);
    if (!rows.bind(1, id).step()) {
        return std::nullopt;
    }
    return readRow(connection_.database(), rows);
}

// Times never fall with the id, so a range of times is a range of ids.
IdRange LogReader::idsOf(std::pair<std::int64_t, std::int64_t> millis) {
    IdRange const all(1, lastId());
    long const first = firstAtOrAfter(millis.first, all);
    return {first, firstAfter(millis.second, all) - 1};
}

void LogReader::messages(int stream, IdRange ids, bool newestFirst, RowSink const& sink) {
    Statement& rows = connection_.statement(
        selectRows("id BETWEEN ?1 AND ?2 AND " + seenInStream() + orderById(newestFirst)));
    StatementUse const use(rows);
    rows.bind(1, ids.first).bind(2, ids.second).bind(3, stream);
    while (rows.step()) {
        sink(readRow(connection_.database(), rows));
    }
}

void LogReader::ids(int stream, bool newestFirst, std::function<void(long)> const& sink) {
    Statement& rows = connection_.statement("SELECT id FROM messages WHERE " + seenInStream() +
                                            orderById(newestFirst));
    StatementUse const use(rows);
    rows.bind(3, stream);
    while (rows.step()) {
        sink(static_cast<long>(rows.number(0)));
    }
}

// The next number out never falls within a numbering, so the place of a number is found by halving.
IdRange LogReader::sentWithin(long from, int first, int last) {
    last = std::min(last, std::numeric_limits<int>::max() - 1);
    IdRange const all(from, lastId());
    return {firstWithNextOutAbove(first, all), firstWithNextOutAbove(last + 1, all)};
}

void LogReader::sent(long from, int first, int last, Damaged damaged,
                     std::function<bool(LogRow&&)> const& sink) {
    IdRange const ids = sentWithin(from, first, last);
    Statement& rows =
        connection_.statement(selectRows("id BETWEEN ?1 AND ?2 AND origin=0 AND stream IN (1,3,4) "
                                         "AND seq BETWEEN ?3 AND ?4 ORDER BY id"));
    StatementUse const use(rows);
    rows.bind(1, ids.first).bind(2, ids.second).bind(3, first).bind(4, last);
    bool isWanted = true;
    for (int seq = 0; isWanted && seq < last && rows.step();) {
        seq = static_cast<int>(rows.number(4));
        if (damaged == Damaged::Throws) {
            isWanted = sink(readRow(connection_.database(), rows));
        } else if (std::optional<LogRow> row = readSoundRow(rows)) {
            isWanted = sink(std::move(*row));
        }
    }
}

// The least id from which on all rows have it; one above the range when none has.
template <class IsReached>
long LogReader::firstWhere(IdRange ids, IsReached const& isReached) {
    auto [low, end] = ids;
    ++end;
    while (low < end) {
        long const middle = low + (end - low) / 2;
        Statement& probe = connection_.statement(
            "SELECT id,time,next_out FROM messages WHERE id>=?1 ORDER BY id LIMIT 1");
        StatementUse const use(probe);
        if (!probe.bind(1, middle).step() || probe.number(0) >= end || isReached(probe)) {
            end = middle;
        } else {
            low = static_cast<long>(probe.number(0)) + 1;
        }
    }
    return low;
}

long LogReader::firstAtOrAfter(std::int64_t millis, IdRange ids) {
    std::string const time = timeText(millis);
    return firstWhere(ids, [&](Statement const& row) { return row.bytes(1) >= time; });
}

long LogReader::firstAfter(std::int64_t millis, IdRange ids) {
    std::string const time = timeText(millis);
    return firstWhere(ids, [&](Statement const& row) { return row.bytes(1) > time; });
}

long LogReader::firstWithNextOutAbove(int number, IdRange ids) {
    return firstWhere(ids, [&](Statement const& row) { return row.number(2) > number; });
}

} // namespace zan::server
