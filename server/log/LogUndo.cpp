// Takes edits back. What that does is an edit of its own: the audit tells it as an update, as an
// insertion of what had been deleted, or as a deletion of what had been inserted.
#include "server/log/AuditTrail.h"
#include "server/log/EditedRows.h"
#include "server/log/LogEdits.h"

#include <algorithm>
#include <map>
#include <utility>

namespace zan::server {

namespace {

bool takeBackInsertion(LogRow* row, EditedRows& rows, AuditTrail& trail) {
    if (!row || row->isHidden) {
        return false;
    }
    trail.add(row->entry, "delete");
    rows.remove(*row);
    return true;
}

// `row` is what is there now, if anything.
bool takeBack(FixEntry const& then, LogRow* row, EditedRows& rows, AuditTrail& trail) {
    if (!row) {
        trail.add(then, "insert");
        rows.restore(then);
        return true;
    }
    bool const isSame = row->entry.text == then.text && row->entry.note == then.note;
    if (isSame && !row->isHidden) {
        return false;
    }
    trail.add(row->isHidden ? then : row->entry, row->isHidden ? "insert" : "update");
    if (row->entry.text != then.text) {
        rows.setText(*row, then.text);
    }
    row->entry.note = then.note;
    row->isHidden = false;
    rows.update(*row);
    return true;
}

} // namespace

long LogEdits::undo(int stream, std::string const& where, std::string const& user) {
    std::lock_guard const lock(editing_);
    std::vector<Undone> const all = oldestOf(stream, where);
    EditTraces const traces(user, "update");
    std::size_t at = 0;
    return countPieces(traces, [&] { return at == all.size() ? noPiece : undo(all, at, traces); });
}

// The entries of the audit are in the order of their edits.
std::vector<LogEdits::Undone> LogEdits::oldestOf(int stream, std::string const& where) {
    SearchTerms terms;
    terms.source = RowSource::Audit;
    terms.stream = stream;
    terms.where = where;
    CallersSql const id("id");
    std::map<long, long> oldest;
    ReadPool::Reader const pooled(pool_);
    RowSearch search(pooled->guard(), terms, &id, id.partsAtCommas());
    while (search.next()) {
        auto const [found, isNew] =
            oldest.emplace(std::stol(std::string(search.value(0))), search.key());
        found->second = std::min(found->second, search.key());
    }
    std::vector<Undone> all;
    all.reserve(oldest.size());
    for (auto const& [entry, auditEntry] : oldest) {
        all.push_back({entry, auditEntry});
    }
    return all;
}

long LogEdits::undo(std::vector<Undone> const& all, std::size_t& at, EditTraces const& traces) {
    long count = 0;
    std::size_t end = at;
    connection_.transact([&](WriteConnection& connection) {
        AuditTrail trail(connection.database(), traces);
        EditedRows rows(connection);
        std::size_t bytes = 0;
        count = 0;
        for (end = at; end < all.size() && end - at < rowsInPiece && bytes < bytesInPiece; ++end) {
            AuditedEntry const audited = auditedEntry(connection.database(), all[end].auditEntry);
            std::optional<LogRow> row = rows.find(all[end].id);
            bytes += audited.then.text.size();
            bool const isUndone = audited.action == "insert"
                                      ? takeBackInsertion(row ? &*row : nullptr, rows, trail)
                                      : takeBack(audited.then, row ? &*row : nullptr, rows, trail);
            count += isUndone ? 1 : 0;
        }
    });
    at = end;
    return count;
}

} // namespace zan::server
