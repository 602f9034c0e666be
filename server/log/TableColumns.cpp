#include "server/log/TableColumns.h"

#include "server/log/CallersSql.h"

#include <algorithm>

namespace zan::server {

namespace {

std::string knownColumns() {
    std::string known;
    for (std::size_t column = auditOnly; column < tableColumns.size(); ++column) {
        known += std::string(tableColumns[column]) + ", ";
    }
    return known + "for the audit also edited, user and action";
}

std::size_t columnOf(CallersSql const& list, CallersSql::Part part) {
    std::string const name = part.isEmpty() ? "" : list.name(part.first);
    auto const* const found = std::ranges::find(tableColumns, name);
    if (found == tableColumns.end() || part.last != part.first + 1) {
        list.failAt(part.first,
                    (part.isEmpty() ? "a column is missing" : "there is no such column") +
                        std::string("; there are ") + knownColumns());
    }
    return static_cast<std::size_t>(found - tableColumns.begin());
}

} // namespace

TableColumns::TableColumns(std::string const& list) {
    CallersSql const callers(list);
    if (callers.isBlank()) {
        takeAll(auditOnly);
        return;
    }
    if (callers.tokens().size() == 1 && callers.name(0) == "audit") {
        takeAll(0);
        areOfAudit_ = true;
        return;
    }
    for (CallersSql::Part const& part : callers.partsAtCommas()) {
        columns_.push_back(columnOf(callers, part));
        areOfAudit_ = areOfAudit_ || columns_.back() < auditOnly;
    }
}

std::vector<std::string> TableColumns::names() const {
    std::vector<std::string> names;
    for (std::size_t const column : columns_) {
        names.emplace_back(tableColumns[column]);
    }
    return names;
}

std::vector<std::string> TableColumns::pick(TableRow const& row) const {
    std::vector<std::string> picked;
    picked.reserve(columns_.size());
    for (std::size_t const column : columns_) {
        picked.push_back(row[column]);
    }
    return picked;
}

void TableColumns::takeAll(std::size_t first) {
    for (std::size_t column = first; column < tableColumns.size(); ++column) {
        columns_.push_back(column);
    }
}

} // namespace zan::server
