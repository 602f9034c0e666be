/// A statement that is put together from SQL of ours and of a caller's, and that knows which part
/// of it came from where.
///
/// Threads: one at a time.
#ifndef ZANENGINE_SERVER_LOG_SQLBUILDER_H
#define ZANENGINE_SERVER_LOG_SQLBUILDER_H

#include "server/log/CallersSql.h"

#include <string>
#include <string_view>
#include <vector>

namespace zan::server {

class SqlBuilder {
public:
    void add(std::string_view ours) { sql_ += ours; }

    /// Adds a part in brackets; `tag(N)` becomes a call with the entry's text. The caller's SQL has
    /// to outlive the builder.
    void add(CallersSql const& callers, CallersSql::Part part);

    std::string const& sql() const { return sql_; }

    /// Throws `BadExpression` with the caller's position for an offset in `sql`, or when that is
    /// not known (negative), for the first use of one of the names.
    [[noreturn]] void fail(int offset, std::vector<std::string> const& culprits,
                           std::string const& reason) const;

private:
    struct Piece {
        CallersSql const* callers;
        std::size_t begin;
        std::size_t end;
        std::size_t callersBegin;
    };

    void addPiece(CallersSql const& callers, std::size_t begin, std::size_t end);
    void checkTag(CallersSql const& callers, std::size_t token) const;
    void failByName(std::string const& culprit, std::string const& reason) const;

    std::string sql_;
    std::vector<Piece> pieces_;
};

} // namespace zan::server

#endif
