#include "server/log/LogEdits.h"

#include "server/log/AuditTrail.h"
#include "server/log/LogClock.h"

#include <sqlite3.h>

#include <algorithm>
#include <utility>

namespace zan::server {

namespace {

SearchTerms termsOf(int stream, std::string const& where) {
    SearchTerms terms;
    terms.source = RowSource::Rows;
    terms.stream = stream;
    terms.where = where;
    return terms;
}

// `note = <expression>, text = <expression>`, in any order.
class Assignments {
public:
    explicit Assignments(std::string const& text) : callers_(text) {
        for (CallersSql::Part const& part : callers_.partsAtCommas()) {
            take(part);
        }
    }

    CallersSql const& callers() const { return callers_; }
    std::vector<CallersSql::Part> const& values() const { return values_; }
    std::vector<std::string> const& names() const { return names_; }

private:
    void take(CallersSql::Part part) {
        constexpr char const* right = "note = <expression> or text = <expression> would be right";
        std::string const name = part.isEmpty() ? "" : callers_.name(part.first);
        if (name.empty()) {
            callers_.failAt(part.first, right);
        }
        if (name != "note" && name != "text") {
            callers_.failAt(part.first, "'" + name + "' cannot be changed; " + right);
        }
        if (std::ranges::find(names_, name) != names_.end()) {
            callers_.failAt(part.first, "'" + name + "' is changed twice");
        }
        if (part.last < part.first + 2 || !callers_.isSymbol(part.first + 1, '=')) {
            callers_.failAt(part.first + 1, right);
        }
        names_.push_back(name);
        values_.push_back({part.first + 2, part.last});
    }

    CallersSql const callers_;
    std::vector<CallersSql::Part> values_;
    std::vector<std::string> names_;
};

// Looks at rows and at what the session still needs of them, inside of a transaction.
class EditedRows {
public:
    explicit EditedRows(WriteConnection& connection)
        : connection_(connection), numberingFirst_(connection.meta("numbering_first")),
          newest_(connection.database().number("SELECT id FROM messages ORDER BY id DESC LIMIT 1")),
          rows_(connection.database(),
                "SELECT " + std::string(rowColumns) + " FROM messages WHERE id=?1"),
          delete_(connection.database(), "DELETE FROM messages WHERE id=?1") {}

    std::optional<LogRow> visible(long id) {
        StatementUse const use(rows_);
        if (!rows_.bind(1, id).step()) {
            return std::nullopt;
        }
        LogRow row = readRow(connection_.database(), rows_);
        return row.isHidden ? std::nullopt : std::optional(std::move(row));
    }

    // The counterparty may ask for it again.
    bool isNeeded(LogRow const& row) const {
        return isSent(row.entry) && row.entry.id >= numberingFirst_;
    }

    void update(LogRow const& row) { connection_.rows().update(row, timeText(row.entry.millis)); }

    // The newest row keeps the numbers, and its id must never come again.
    void remove(LogRow& row) {
        if (isNeeded(row) || row.entry.id == newest_) {
            row.isHidden = true;
            update(row);
        } else {
            delete_.bind(1, row.entry.id).run();
        }
    }

private:
    WriteConnection& connection_;
    std::int64_t const numberingFirst_;
    std::int64_t const newest_;
    Statement rows_;
    Statement delete_;
};

bool isFull(SqliteFailure const& failure) {
    return failure.code() == SQLITE_FULL || failure.code() == SQLITE_IOERR;
}

} // namespace

long LogEdits::update(int stream, std::string const& assignments, std::string const& where,
                      std::string const& user) {
    std::lock_guard const lock(editing_);
    return apply(changesOf(termsOf(stream, where), assignments), user);
}

long LogEdits::remove(int stream, std::string const& where, std::string const& user) {
    std::lock_guard const lock(editing_);
    std::vector<long> const ids = idsOf(termsOf(stream, where));
    try {
        return remove(ids, user);
    } catch (SqliteFailure const& failure) {
        if (!isFull(failure) || !reserve_.giveUp()) {
            throw;
        }
    }
    return remove(ids, user);
}

long LogEdits::insert(LogWriter& writer, std::vector<FixEntry> entries, std::string const& user) {
    for (FixEntry& entry : entries) {
        entry.origin = FixOrigin::inserted;
        writer.append(std::move(entry));
    }
    std::vector<FixEntry> const inserted = writer.commit([&](WriteConnection& connection) {
        AuditTrail trail(connection.database(), user, "insert");
        for (LogRow const& row : writer.openRows()) {
            trail.add(row.entry);
        }
    });
    return static_cast<long>(inserted.size());
}

std::vector<LogEdits::Change> LogEdits::changesOf(SearchTerms const& terms,
                                                  std::string const& assignments) {
    Assignments const wanted(assignments);
    ReadPool::Reader const pooled(pool_);
    RowSearch search(pooled->guard(), terms, &wanted.callers(), wanted.values());
    std::vector<Change> changes;
    while (search.next()) {
        Change change;
        change.id = search.key();
        for (std::size_t index = 0; index < wanted.names().size(); ++index) {
            auto& value = wanted.names()[index] == "text" ? change.text : change.note;
            value = search.value(index);
        }
        if (change.text && change.text->empty()) {
            wanted.callers().failAt(wanted.values().front().first,
                                    "the text of the entry with id " + std::to_string(change.id) +
                                        " would be empty");
        }
        changes.push_back(std::move(change));
    }
    return changes;
}

std::vector<long> LogEdits::idsOf(SearchTerms const& terms) {
    ReadPool::Reader const pooled(pool_);
    RowSearch search(pooled->guard(), terms);
    std::vector<long> ids;
    while (search.next()) {
        ids.push_back(search.key());
    }
    return ids;
}

long LogEdits::apply(std::vector<Change> const& changes, std::string const& user) {
    long count = 0;
    connection_.transact([&](WriteConnection& connection) {
        AuditTrail trail(connection.database(), user, "update");
        EditedRows rows(connection);
        for (Change const& change : changes) {
            std::optional<LogRow> row = rows.visible(change.id);
            if (!row) {
                continue;
            }
            trail.add(row->entry);
            if (change.text && rows.isNeeded(*row) && !row->wire) {
                row->wire = row->entry.text;
            }
            row->entry.text = change.text.value_or(row->entry.text);
            row->entry.note = change.note.value_or(row->entry.note);
            rows.update(*row);
            ++count;
        }
    });
    return count;
}

long LogEdits::remove(std::vector<long> const& ids, std::string const& user) {
    long count = 0;
    connection_.transact([&](WriteConnection& connection) {
        AuditTrail trail(connection.database(), user, "delete");
        EditedRows rows(connection);
        for (long const id : ids) {
            std::optional<LogRow> row = rows.visible(id);
            if (!row) {
                continue;
            }
            trail.add(row->entry);
            rows.remove(*row);
            ++count;
        }
    });
    return count;
}

} // namespace zan::server
