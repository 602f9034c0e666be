/// Finds rows by what a caller's expressions say of them.
///
/// Threads: one at a time.
#ifndef ZANENGINE_SERVER_LOG_ROWSEARCH_H
#define ZANENGINE_SERVER_LOG_ROWSEARCH_H

#include "server/log/LogReader.h"
#include "server/log/SqlBuilder.h"

#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zan::server {

/// What is searched: the messages, these and the notes without a message, or the audit of edits.
enum class RowSource { Messages, Rows, Audit };

struct SearchTerms {
    RowSource source = RowSource::Messages;
    int stream = allStreams;
    IdRange ids{1, std::numeric_limits<long>::max()};
    /// Nothing but these, when it is there. Not for the audit.
    std::vector<int> const* idSet = nullptr;
    std::string where;
    std::string orderBy;
    bool newestFirst = false;
};

class RowSearch {
public:
    /// Throws `BadExpression`. `values` are computed for each row that is found; the caller's SQL
    /// of them has to outlive the search.
    RowSearch(ExpressionGuard& guard, SearchTerms const& terms, CallersSql const* callers = nullptr,
              std::vector<CallersSql::Part> const& values = {});

    /// Moves to the next row that fits; false at the end.
    bool next();

    /// The id, in the audit the number of its entry.
    long key() const { return static_cast<long>(statement_->number(0)); }

    /// As text, valid until the next row.
    std::string_view value(std::size_t index) const;

private:
    void addConditions(SearchTerms const& terms);
    void addOrder(bool newestFirst);
    void addOrderTerm(CallersSql::Part part, bool newestFirst);

    ExpressionGuard& guard_;
    std::string const key_;
    CallersSql const where_;
    CallersSql const orderBy_;
    SqlBuilder sql_;
    std::optional<Statement> statement_;
    ExpressionGuard::Clock::duration spent_{};
};

} // namespace zan::server

#endif
