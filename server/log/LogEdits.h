/// Edits of the log, each with its traces in the audit.
///
/// Threads: any; one edit at a time.
#ifndef ZANENGINE_SERVER_LOG_LOGEDITS_H
#define ZANENGINE_SERVER_LOG_LOGEDITS_H

#include "server/log/LogWriter.h"
#include "server/log/ReadPool.h"
#include "server/log/RowSearch.h"
#include "server/log/SpaceReserve.h"

#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace zan::server {

class LogEdits {
public:
    /// Everything given has to outlive the edits.
    LogEdits(WriteConnection& connection, ReadPool& pool, SpaceReserve& reserve)
        : connection_(connection), pool_(pool), reserve_(reserve) {}

    long update(int stream, std::string const& assignments, std::string const& where,
                std::string const& user);
    long remove(int stream, std::string const& where, std::string const& user);

    /// With the turn.
    static long insert(LogWriter& writer, std::vector<FixEntry> entries, std::string const& user);

private:
    struct Change {
        long id = 0;
        std::optional<std::string> text;
        std::optional<std::string> note;
    };

    std::vector<Change> changesOf(SearchTerms const& terms, std::string const& assignments);
    std::vector<long> idsOf(SearchTerms const& terms);
    long apply(std::vector<Change> const& changes, std::string const& user);
    long remove(std::vector<long> const& ids, std::string const& user);

    WriteConnection& connection_;
    ReadPool& pool_;
    SpaceReserve& reserve_;
    std::mutex editing_;
};

} // namespace zan::server

#endif
