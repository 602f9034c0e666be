/// The rows that an edit changes, with what the session still needs of them.
///
/// Threads: one at a time, inside of a transaction.
#ifndef ZANENGINE_SERVER_LOG_EDITEDROWS_H
#define ZANENGINE_SERVER_LOG_EDITEDROWS_H

#include "server/log/LogRow.h"
#include "server/log/Sqlite.h"
#include "server/log/WriteConnection.h"

#include <cstdint>
#include <optional>

namespace zan::server {

class EditedRows {
public:
    explicit EditedRows(WriteConnection& connection);

    /// Nothing for a row that is not there.
    std::optional<LogRow> find(long id);

    /// Nothing for a row that is hidden, either.
    std::optional<LogRow> visible(long id);

    /// Whether the counterparty may ask for it again.
    bool isNeeded(LogRow const& row) const;

    /// What the session needs of the bytes on the wire stays.
    void setText(LogRow& row, std::string text) const;

    void update(LogRow const& row);
    void remove(LogRow& row);

    /// Puts a row back that was removed for good.
    void restore(FixEntry const& entry);

private:
    WriteConnection& connection_;
    std::int64_t const numberingFirst_;
    std::int64_t const newest_;
    Statement rows_;
    Statement next_;
    Statement delete_;
};

} // namespace zan::server

#endif
