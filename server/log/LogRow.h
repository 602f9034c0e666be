/// One row of the log, as it lies in the file.
///
/// Threads: values.
#ifndef ZANENGINE_SERVER_LOG_LOGROW_H
#define ZANENGINE_SERVER_LOG_LOGROW_H

#include "server/log/Sqlite.h"
#include "server/sessions/FixSessionStore.h"

#include <optional>
#include <string>
#include <string_view>

namespace zan::server {

struct LogRow {
    FixEntry entry;
    /// The session's numbers after this row.
    FixNumbers after;
    /// What was on the wire, where an edit has changed the entry's text and the session may be
    /// asked for the message again.
    std::optional<std::string> wire;
    /// Deleted by an edit, and kept for the session alone.
    bool isHidden = false;

    /// The bytes that the session sends again.
    std::string const& wireText() const { return wire ? *wire : entry.text; }
};

/// Of the text of a message: tag 35, empty when there is none.
std::string_view typeOf(std::string_view text);

/// Did it leave under a number of its own?
bool isSent(FixEntry const& entry);

/// The columns that `readRow` expects, in their order.
inline constexpr std::string_view rowColumns =
    "id,time,stream,type,seq,origin,next_out,next_in,text,note,checksum,wire,hidden";

/// The condition of rows that anybody may see. Those that only damage hides are among them: reading
/// them fails.
inline constexpr std::string_view shownRows =
    "(hidden=0 OR checksum<>row_sum(id,time,stream,type,seq,origin,next_out,next_in,text,note,wire,"
    "-1))";

/// Throws `LogFailure` with file and id when the row is not what was written.
LogRow readRow(Database const& database, Statement const& statement);

/// Nothing when the row is not what was written.
std::optional<LogRow> readSoundRow(Statement const& statement);

/// Writes rows; for new ones, and for those that an edit changed.
class RowWriter {
public:
    explicit RowWriter(Database const& database);

    void insert(LogRow const& row, std::string const& time);

    /// Text, type, note, wire bytes and hidden flag of the row that is there already.
    void update(LogRow const& row, std::string const& time);

private:
    Statement insert_;
    Statement update_;
};

} // namespace zan::server

#endif
