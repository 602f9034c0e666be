/// What rows were before edits changed or removed them, and what edits put in.
///
/// Threads: one at a time, inside of a transaction.
#ifndef ZANENGINE_SERVER_LOG_AUDITTRAIL_H
#define ZANENGINE_SERVER_LOG_AUDITTRAIL_H

#include "server/log/LogRow.h"
#include "server/log/ReadPool.h"

#include <array>
#include <cstdint>
#include <string>

namespace zan::server {

/// The columns of the log as a table; the first three are those of the audit alone.
inline constexpr std::array tableColumns = {"edited", "user", "action", "id",     "time", "stream",
                                            "type",   "seq",  "sender", "target", "text", "note"};
inline constexpr std::size_t auditOnly = 3;

using TableRow = std::array<std::string, tableColumns.size()>;

/// As text in every column but the audit's own.
TableRow tableRowOf(FixEntry const& entry);

/// Of the audit, by the number of its entry; without secrets, which the file keeps.
TableRow auditRow(ReadConnection& connection, long entry);

/// What an entry of the audit tells: what was done to an entry of the log, and what that was then.
struct AuditedEntry {
    std::string action;
    FixEntry then;
};

/// With its secrets. Throws `LogFailure` when it is not what was written.
AuditedEntry auditedEntry(Database const& database, long entry);

/// Of one edit: who made it, what it was, and when it began.
struct EditTraces {
    EditTraces(std::string who, char const* what);

    std::string const user;
    std::string const action;
    std::string const edited;
};

/// Writes what one edit did.
class AuditTrail {
public:
    AuditTrail(Database const& database, EditTraces const& traces);

    void add(FixEntry const& entry) { add(entry, traces_.action); }

    /// Of an edit that does more than one kind of thing.
    void add(FixEntry const& entry, std::string const& action);

private:
    Statement insert_;
    std::int64_t entry_; ///< the newest
    EditTraces const& traces_;
};

} // namespace zan::server

#endif
