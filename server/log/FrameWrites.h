/// The file system that SQLite writes logs with: its own for Unix, but that write-ahead logs are
/// `AheadFile`s, and that nobody but the owner has rights to the files that it makes. A frame of a
/// write-ahead log, a header of 24 bytes and a page, is written at once: SQLite itself writes the
/// two apart, and half of a small commit's time is spent in these calls.
///
/// Threads: any.
#ifndef ZANENGINE_SERVER_LOG_FRAMEWRITES_H
#define ZANENGINE_SERVER_LOG_FRAMEWRITES_H

#include <memory>

struct sqlite3;

namespace zan::server {

class AheadFile;

/// The name to open a database with. It keeps other processes out, and the index of the write-ahead
/// log in this process's own memory. Throws `LogFailure` when SQLite has no such file system.
char const* logFileSystem();

/// The write-ahead file of a database that was read from. Null when it has none.
std::shared_ptr<AheadFile> aheadFileOf(sqlite3* database);

} // namespace zan::server

#endif
