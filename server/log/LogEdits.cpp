#include "server/log/LogEdits.h"

#include "server/log/AuditTrail.h"
#include "server/log/EditedRows.h"

#include <sqlite3.h>

#include <algorithm>
#include <cstddef>
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

long LogEdits::update(int stream, std::string const& assignments, std::string const& where,
                      std::string const& user) {
    std::lock_guard const lock(editing_);
    Assignments const wanted(assignments);
    auto const assign = [](EditedRows& rows, LogRow& row, Change const& change) {
        if (change.text) {
            rows.setText(row, *change.text);
        }
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
    return countPieces(traces, [&] {
        if (terms.ids.first > terms.ids.second) {
            return noPiece;
        }
        std::vector<Change> const piece = pieceOf(terms, wanted);
        if (piece.empty()) {
            return noPiece;
        }
        terms.ids.first = piece.back().id + 1;
        return write(piece, traces, apply);
    });
}

long LogEdits::countPieces(EditTraces const& traces, std::function<long()> const& next) {
    long count = 0;
    try {
        for (long piece = next(); piece != noPiece; piece = next()) {
            count += piece;
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
