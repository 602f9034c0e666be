/// The tables of a log file, and how the file of an older version gets those that it lacks.
///
/// Threads: while the log is being opened only.
#ifndef ZANENGINE_SERVER_LOG_LOGSCHEMA_H
#define ZANENGINE_SERVER_LOG_LOGSCHEMA_H

#include "server/log/Sqlite.h"

namespace zan::server {

/// The version of the layout of a file, 0 for an empty one. Throws `WrongConfigurationException`
/// for a file that is no log, or one of a newer version; such a file is left as it is.
int checkedVersion(Database& database);

/// Makes the tables that the file lacks, in one transaction.
void bringUp(Database& database, int version);

} // namespace zan::server

#endif
