/// The functions of expressions whose time or growth SQLite does not bound, with bounds.
///
/// Threads: one at a time, as the database.
#ifndef ZANENGINE_SERVER_LOG_BOUNDEDFUNCTIONS_H
#define ZANENGINE_SERVER_LOG_BOUNDEDFUNCTIONS_H

#include "server/log/SearchClock.h"
#include "server/log/Sqlite.h"

namespace zan::server {

/// Puts `like`, `glob`, `instr`, `replace`, `trim`, `ltrim`, `rtrim`, `printf` and `format` in the
/// place of SQLite's own, which mean the same, and adds `tag(text, N)` and `seen(text)`, which is
/// the bytes as text. Each of them stops a search whose time is over; as every large value comes
/// from one of them, no row takes much longer. The clock has to outlive the database's statements.
void addBoundedFunctions(Database const& database, SearchClock const& clock);

} // namespace zan::server

#endif
