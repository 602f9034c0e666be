/// Which columns of the log as a table a caller wants.
///
/// Threads: values.
#ifndef ZANENGINE_SERVER_LOG_TABLECOLUMNS_H
#define ZANENGINE_SERVER_LOG_TABLECOLUMNS_H

#include "server/log/AuditTrail.h"

#include <cstddef>
#include <string>
#include <vector>

namespace zan::server {

class TableColumns {
public:
    /// A list of names with commas; empty for all of the log, `audit` for all of the audit. Throws
    /// `BadExpression` for a name that is no column.
    explicit TableColumns(std::string const& list);

    /// Are the rows those of the audit?
    bool areOfAudit() const { return areOfAudit_; }

    std::vector<std::string> names() const;
    std::vector<std::string> pick(TableRow const& row) const;

private:
    void takeAll(std::size_t first);

    std::vector<std::size_t> columns_;
    bool areOfAudit_ = false;
};

} // namespace zan::server

#endif
