/// The tables of a log file, and how the file of an older version gets those that it lacks.
///
/// Threads: while the log is being opened only.
#ifndef ZANENGINE_SERVER_LOG_LOGSCHEMA_H
#define ZANENGINE_SERVER_LOG_LOGSCHEMA_H

#include "server/log/Sqlite.h"

#include <cstdint>
#include <string_view>

namespace zan::server {

/// The version of the layout of a file, 0 for an empty one. Throws `WrongConfigurationException`
/// for a file that is no log, or one of a newer version; such a file is left as it is.
int checkedVersion(Database& database);

/// Makes the tables that the file lacks, in one transaction.
void bringUp(Database& database, int version);

/// Throws `LogFailure` when what the log knows of itself, or a mark, is not what was written.
void requireSoundTables(Database& database);

/// What the log knows of itself: the value under the name `?1`, and whether it is what was written.
inline constexpr char const* metaByName =
    "SELECT value,checksum=row_sum(name,value) FROM meta WHERE name=?1";

/// Throws `LogFailure` when it is missing or damaged. For a statement of `metaByName`.
std::int64_t readMeta(Database const& database, Statement& statement, std::string_view name);

} // namespace zan::server

#endif
