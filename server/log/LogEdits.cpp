#include "server/log/LogEdits.h"

#include "server/log/AuditTrail.h"
#include "server/log/LogClock.h"

#include <sqlite3.h>

#include <algorithm>
#include <cstddef>
#include <utility>

namespace zan::server {

namespace {

// One transaction of an edit: as much as a send may wait for.
constexpr std::size_t rowsInPiece = 256;
constexpr std::size_t bytesInPiece = 1024 * 1024;

SearchTerms termsOf(int stream, std::string const& where) {
    SearchTerms terms;
    terms.source = RowSource::Rows;
    terms.stream = stream;
    terms.where = where;
    return terms;
}

bool isFull(SqliteFailure const& failure) {
    return failure.code() == SQLITE_FULL || failure.code() == SQLITE_IOERR;
}

} // namespace

// `note = <expression>, text = <expression>`, in any order.
class LogEdits::Assignments {
public:
    explicit Assignments(std::string const& text) : callers_(text) {
        for (CallersSql::Part const& part : callers_.partsAtCommas()) {
            take(part);
        }
    }

    CallersSql const& callers() const { return callers_; }
    std::vector<CallersSql::Part> const& values() const { return values_; }

    // Of the row that the search has found.
    Change valuesOf(RowSearch const& search) const {
        Change change;
        for (std::size_t index = 0; index < names_.size(); ++index) {
            (names_[index] == "text" ? change.text : change.note) = search.value(index);
        }
        if (change.text && change.text->empty()) {
            callers_.failAt(values_.front().first, "the text of the entry with id " +
                                                       std::to_string(search.key()) +
                                                       " would be empty");
        }
        return change;
    }

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

RowSearch LogEdits::searchFor(ReadConnection& connection, SearchTerms const& terms,
                              Assignments const* wanted) {
    return wanted ? RowSearch(connection.guard(), terms, &wanted->callers(), wanted->values())
                  : RowSearch(connection.guard(), terms);
}

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

long LogEdits::update(int stream, std::string const& assignments, std::string const& where,
                      std::string const& user) {
    std::lock_guard const lock(editing_);
    Assignments const wanted(assignments);
    auto const assign = [](EditedRows& rows, LogRow& row, Change const& change) {
        if (change.text && rows.isNeeded(row) && !row.wire) {
            row.wire = row.entry.text;
        }
        row.entry.text = change.text.value_or(row.entry.text);
        row.entry.note = change.note.value_or(row.entry.note);
        rows.update(row);
    };
    return inPieces(termsOf(stream, where), &wanted, EditTraces(user, "update"), assign);
}

long LogEdits::remove(int stream, std::string const& where, std::string const& user) {
    std::lock_guard const lock(editing_);
    auto const take = [](EditedRows& rows, LogRow& row, Change const&) { rows.remove(row); };
    return inPieces(termsOf(stream, where), nullptr, EditTraces(user, "delete"), take);
}

long LogEdits::insert(LogWriter& writer, std::vector<FixEntry>& entries, EditTraces const& traces) {
    std::size_t bytes = 0;
    std::size_t count = 0;
    for (; count < std::min(rowsInPiece, entries.size()) && bytes < bytesInPiece; ++count) {
        FixEntry& entry = entries[count];
        bytes += entry.text.size();
        entry.origin = FixOrigin::inserted;
        writer.append(std::move(entry));
    }
    writer.commit([&](WriteConnection& connection) {
        AuditTrail trail(connection.database(), traces);
        for (LogRow const& row : writer.openRows()) {
            trail.add(row.entry);
        }
    });
    entries.erase(entries.begin(), entries.begin() + static_cast<std::ptrdiff_t>(count));
    return static_cast<long>(count);
}

// Rows that come meanwhile are behind the last one.
long LogEdits::inPieces(SearchTerms terms, Assignments const* wanted, EditTraces const& traces,
                        Apply const& apply) {
    terms.ids.second = lastOf(terms, wanted);
    long count = 0;
    try {
        while (terms.ids.first <= terms.ids.second) {
            std::vector<Change> const piece = pieceOf(terms, wanted);
            if (piece.empty()) {
                break;
            }
            count += write(piece, traces, apply);
            terms.ids.first = piece.back().id + 1;
        }
    } catch (LogFailure const& failure) {
        if (count == 0) {
            throw;
        }
        throw LogFailure(std::string(failure.what()) + "; " + std::to_string(count) +
                         " entries were edited before, as the audit tells under the time " +
                         traces.edited);
    }
    return count;
}

// Computes everything that the edit will need, and keeps nothing of it.
long LogEdits::lastOf(SearchTerms const& terms, Assignments const* wanted) {
    ReadPool::Reader const pooled(pool_);
    RowSearch search = searchFor(*pooled, terms, wanted);
    long last = 0;
    while (search.next()) {
        last = search.key();
        if (wanted) {
            wanted->valuesOf(search);
        }
    }
    return last;
}

std::vector<LogEdits::Change> LogEdits::pieceOf(SearchTerms const& terms,
                                                Assignments const* wanted) {
    ReadPool::Reader const pooled(pool_);
    RowSearch search = searchFor(*pooled, terms, wanted);
    std::vector<Change> piece;
    std::size_t bytes = 0;
    while (piece.size() < rowsInPiece && bytes < bytesInPiece && search.next()) {
        Change change = wanted ? wanted->valuesOf(search) : Change();
        change.id = search.key();
        bytes += change.text.value_or("").size() + change.note.value_or("").size();
        piece.push_back(std::move(change));
    }
    return piece;
}

long LogEdits::write(std::vector<Change> const& piece, EditTraces const& traces,
                     Apply const& apply) {
    long count = 0;
    auto const work = [&](WriteConnection& connection) {
        count = 0;
        AuditTrail trail(connection.database(), traces);
        EditedRows rows(connection);
        for (Change const& change : piece) {
            if (std::optional<LogRow> row = rows.visible(change.id)) {
                trail.add(row->entry);
                apply(rows, *row, change);
                ++count;
            }
        }
    };
    try {
        connection_.transact(work);
    } catch (SqliteFailure const& failure) {
        // Entries can be deleted from a full disk.
        if (traces.action != "delete" || !isFull(failure) || !reserve_.giveUp()) {
            throw;
        }
        connection_.transact(work);
    }
    return count;
}

} // namespace zan::server
