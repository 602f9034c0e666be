/// The tables of a log file, and how the file of an older version gets those that it lacks.
///
/// Threads: while the log is being opened only.
#ifndef ZANENGINE_SERVER_LOG_LOGSCHEMA_H
#define ZANENGINE_SERVER_LOG_LOGSCHEMA_H

#include "server/log/Sqlite.h"

namespace zan::server {

/// Makes the tables in an empty file, and brings up those of an older version, in one transaction.
/// Throws `WrongConfigurationException` for a file that is no log, or one of a newer version; such
/// a file is left as it is.
void bringUp(Database& database);

} // namespace zan::server

#endif
