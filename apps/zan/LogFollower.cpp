#include "apps/zan/LogFollower.h"

#include <algorithm>
#include <charconv>
#include <utility>

namespace zan::cli {

namespace {

constexpr long allStreams = -1;

} // namespace

LogFollower::LogFollower(Session& session, std::string connection, long stream, std::string where)
    : session_(session), connection_(std::move(connection)), stream_(stream),
      where_(std::move(where)) {
    checkExpression(session_, connection_, where_);
    std::vector<int> const ids =
        session_.engine().getMessageIds(session_.ticket(), connection_, allStreams, true);
    lastId_ = ids.empty() ? 0 : ids.front();
    takeNew([](MessageRow const&) {});
}

// Entries that the expression is not true of are passed over for good: an end is set first, and
// then everything up to it is looked at.
long LogFollower::takeNew(RowSink const& sink) {
    std::string const isNew = "id > " + std::to_string(lastId_);
    std::vector<std::vector<std::string>> table;
    session_.engine().retrieveMessageLogData(session_.ticket(), connection_, allStreams, "id",
                                             isNew, "id", table);
    if (table.size() < 2) {
        return 0;
    }
    long long newest = lastId_;
    std::string const& last = table.back().at(0);
    std::from_chars(last.data(), last.data() + last.size(), newest);
    LogSearch what;
    what.connection = connection_;
    what.stream = stream_;
    std::vector<MessageRow> const rows =
        rowsWhere(session_, what, allOf({isNew, "id <= " + std::to_string(newest), where_}));
    lastId_ = newest;
    std::ranges::for_each(rows, sink);
    return static_cast<long>(rows.size());
}

} // namespace zan::cli
