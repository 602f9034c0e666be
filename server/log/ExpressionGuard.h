/// What stands between a caller's expression and the database: an expression reaches the columns
/// of the log and pure functions, nothing else, and only for a limited time.
///
/// Threads: one at a time, as the database that it guards.
#ifndef ZANENGINE_SERVER_LOG_EXPRESSIONGUARD_H
#define ZANENGINE_SERVER_LOG_EXPRESSIONGUARD_H

#include "server/log/SqlBuilder.h"
#include "server/log/Sqlite.h"

#include <chrono>
#include <memory>

namespace zan::server {

class ExpressionGuard {
public:
    using Clock = std::chrono::steady_clock;

    /// Sets up the database for expressions, including the function `tag(text, N)`.
    ExpressionGuard(Database& database, Clock::duration mostTime);
    ~ExpressionGuard();
    ExpressionGuard(ExpressionGuard const&) = delete;
    ExpressionGuard& operator=(ExpressionGuard const&) = delete;

    /// Throws `BadExpression`. The statement of `sql` has one SELECT inside of another.
    Statement prepare(SqlBuilder const& sql);

    /// Steps a statement that was prepared here. `spent` adds up the time of its steps; with too
    /// much of it, and for a failure that the expression is to blame for, throws `BadExpression`.
    bool step(Statement& statement, SqlBuilder const& sql, Clock::duration& spent);

private:
    struct State;

    Database& database_;
    std::unique_ptr<State> const state_;
};

} // namespace zan::server

#endif
