#include "server/log/EditedRows.h"

#include "server/log/LogClock.h"

#include <string>
#include <utility>

namespace zan::server {

EditedRows::EditedRows(WriteConnection& connection)
    : connection_(connection), numberingFirst_(connection.meta("numbering_first")),
      newest_(connection.database().number("SELECT id FROM messages ORDER BY id DESC LIMIT 1")),
      rows_(connection.database(),
            "SELECT " + std::string(rowColumns) + " FROM messages WHERE id=?1"),
      next_(connection.database(),
            "SELECT " + std::string(rowColumns) + " FROM messages WHERE id>?1 ORDER BY id LIMIT 1"),
      delete_(connection.database(), "DELETE FROM messages WHERE id=?1") {}

std::optional<LogRow> EditedRows::find(long id) {
    StatementUse const use(rows_);
    if (!rows_.bind(1, id).step()) {
        return std::nullopt;
    }
    return readRow(connection_.database(), rows_);
}

std::optional<LogRow> EditedRows::visible(long id) {
    std::optional<LogRow> row = find(id);
    return row && row->isHidden ? std::nullopt : row;
}

bool EditedRows::isNeeded(LogRow const& row) const {
    return isSent(row.entry) && row.entry.id >= numberingFirst_;
}

void EditedRows::setText(LogRow& row, std::string text) const {
    if (isNeeded(row) && !row.wire) {
        row.wire = row.entry.text;
    }
    row.entry.text = std::move(text);
}

void EditedRows::update(LogRow const& row) {
    connection_.rows().update(row, timeText(row.entry.millis));
}

// The newest row keeps the numbers, and its id must never come again.
void EditedRows::remove(LogRow& row) {
    if (isNeeded(row) || row.entry.id == newest_) {
        row.isHidden = true;
        update(row);
    } else {
        delete_.bind(1, row.entry.id).run();
    }
}

// The session's numbers never fall from row to row, and searches rely on that. The newest row is
// never removed for good, so there is one behind.
void EditedRows::restore(FixEntry const& entry) {
    LogRow row;
    row.entry = entry;
    row.entry.origin = FixOrigin::inserted;
    StatementUse const use(next_);
    next_.bind(1, entry.id).step();
    row.after = readRow(connection_.database(), next_).after;
    connection_.rows().insert(row, timeText(row.entry.millis));
}

} // namespace zan::server
