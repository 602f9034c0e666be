/// The reading operations of the log, each over a connection and a moment of its own.
///
/// Threads: any.
#ifndef ZANENGINE_SERVER_LOG_LOGQUERIES_H
#define ZANENGINE_SERVER_LOG_LOGQUERIES_H

#include "server/log/LogReader.h"
#include "server/log/MessageLog.h"
#include "server/log/ReadPool.h"
#include "server/log/RowSearch.h"

#include <string>
#include <vector>

namespace zan::server {

class LogQueries {
public:
    using Sink = MessageLog::Sink;

    explicit LogQueries(ReadPool& pool) : pool_(pool) {}

    void read(LogQuery const& query, Sink const& sink) const;
    void readSent(int first, int last, std::string const& where, Sink const& sink) const;
    std::vector<int> ids(int stream, bool newestFirst) const;
    void readTable(int stream, std::string const& columns, std::string const& where,
                   std::string const& orderBy, LogTable& table) const;

private:
    static void readPlain(LogReader& reader, LogQuery const& query, IdRange ids, Sink const& sink);
    static void readSet(LogReader& reader, LogQuery const& query, IdRange ids, Sink const& sink);

    ReadPool& pool_;
};

} // namespace zan::server

#endif
