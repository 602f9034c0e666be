/// The file system that SQLite writes logs with: its own for Unix, but that a frame of the
/// write-ahead log, a header of 24 bytes and a page, is written at once. SQLite itself writes the
/// two apart, and half of a small commit's time is spent in these calls.
///
/// Threads: any.
#ifndef ZANENGINE_SERVER_LOG_FRAMEWRITES_H
#define ZANENGINE_SERVER_LOG_FRAMEWRITES_H

namespace zan::server {

/// The name to open a database with. It keeps other processes out, and the index of the write-ahead
/// log in this process's own memory. Throws `LogFailure` when SQLite has no such file system.
char const* logFileSystem();

} // namespace zan::server

#endif
