#include "server/log/ExpressionGuard.h"

#include "server/log/BoundedFunctions.h"

#include <sqlite3.h>

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

namespace zan::server {

namespace {

using namespace std::string_view_literals;
using Clock = ExpressionGuard::Clock;

// After how many instructions of SQLite's the clock is looked at.
constexpr int instructionsBetweenLooks = 100;

// What a search may take beside what was in use when it began; orders keep what they compare.
constexpr sqlite3_int64 mostMemory = 512 * 1024 * 1024;

// The outer SELECT and the one that it reads from; one more is a caller's.
constexpr int selectsOfOurs = 2;

constexpr std::array<std::string_view, 10> readable = {"id",   "time", "stream", "type", "seq",
                                                       "text", "note", "edited", "user", "action"};

// By the SELECT that a caller's reads from, which does not show them.
constexpr std::array needed = {"hidden"sv,   "entry"sv,   "checksum"sv, "wire"sv,
                               "next_out"sv, "next_in"sv, "origin"sv};

// Functions without memory, side effects or secrets.
constexpr std::array functions = {
    "abs"sv,     "acos"sv,    "acosh"sv,     "asin"sv,     "asinh"sv,      "atan"sv,   "atan2"sv,
    "atanh"sv,   "ceil"sv,    "ceiling"sv,   "char"sv,     "coalesce"sv,   "cos"sv,    "cosh"sv,
    "degrees"sv, "exp"sv,     "floor"sv,     "format"sv,   "glob"sv,       "hex"sv,    "ifnull"sv,
    "iif"sv,     "instr"sv,   "length"sv,    "like"sv,     "likelihood"sv, "likely"sv, "ln"sv,
    "log"sv,     "log10"sv,   "log2"sv,      "lower"sv,    "ltrim"sv,      "max"sv,    "min"sv,
    "mod"sv,     "nullif"sv,  "pi"sv,        "pow"sv,      "power"sv,      "printf"sv, "quote"sv,
    "radians"sv, "replace"sv, "round"sv,     "rtrim"sv,    "sign"sv,       "sin"sv,    "sinh"sv,
    "sqrt"sv,    "substr"sv,  "substring"sv, "tag"sv,      "tan"sv,        "tanh"sv,   "trim"sv,
    "trunc"sv,   "typeof"sv,  "unicode"sv,   "unlikely"sv, "upper"sv};

bool isFunction(std::string_view name) {
    return std::ranges::find(functions, name) != functions.end();
}

// What the log's own statements call.
bool isOfTheLog(std::string_view name) {
    return name == "row_sum" || name == "seen";
}

// With one value they would sum up over all rows, and leave one of them.
void refuseOneValue(sqlite3_context* context, int, sqlite3_value**) {
    sqlite3_result_error(context, "min and max need two values or more here", -1);
}

void addFunction(Database const& database, char const* name, int values,
                 void (*function)(sqlite3_context*, int, sqlite3_value**)) {
    constexpr int flags = SQLITE_UTF8 | SQLITE_DETERMINISTIC | SQLITE_INNOCUOUS;
    if (sqlite3_create_function_v2(database.handle(), name, values, flags, nullptr, function,
                                   nullptr, nullptr, nullptr) != SQLITE_OK) {
        database.fail();
    }
}

void limit(sqlite3* handle) {
    constexpr int longestValue = 32 * 1024 * 1024;
    sqlite3_limit(handle, SQLITE_LIMIT_LENGTH, longestValue);
    sqlite3_limit(handle, SQLITE_LIMIT_EXPR_DEPTH, 200);
    sqlite3_limit(handle, SQLITE_LIMIT_FUNCTION_ARG, 32);
    sqlite3_limit(handle, SQLITE_LIMIT_LIKE_PATTERN_LENGTH, 1000);
    sqlite3_limit(handle, SQLITE_LIMIT_COMPOUND_SELECT, 1);
    sqlite3_limit(handle, SQLITE_LIMIT_ATTACHED, 0);
    sqlite3_limit(handle, SQLITE_LIMIT_TRIGGER_DEPTH, 1);
    sqlite3_limit(handle, SQLITE_LIMIT_WORKER_THREADS, 0);
}

void defend(sqlite3* handle) {
    sqlite3_db_config(handle, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
    sqlite3_db_config(handle, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
    sqlite3_db_config(handle, SQLITE_DBCONFIG_ENABLE_LOAD_EXTENSION, 0, nullptr);
    sqlite3_db_config(handle, SQLITE_DBCONFIG_DQS_DML, 0, nullptr);
    sqlite3_db_config(handle, SQLITE_DBCONFIG_DQS_DDL, 0, nullptr);
}

// The codes for which the expression is to blame, not the storage.
bool isExpressionsFault(int code) {
    int const plain = code & 0xff;
    return plain == SQLITE_ERROR || plain == SQLITE_TOOBIG || plain == SQLITE_MISMATCH ||
           plain == SQLITE_AUTH || plain == SQLITE_RANGE;
}

} // namespace

struct ExpressionGuard::State {
    explicit State(Clock::duration most) : mostTime(most) {}

    static int authorize(void* self, int action, char const* first, char const* second, char const*,
                         char const*) {
        auto& state = *static_cast<State*>(self);
        return !state.isPreparing || state.allows(action, first, second) ? SQLITE_OK : SQLITE_DENY;
    }

    static int look(void* self) {
        auto& state = *static_cast<State*>(self);
        state.isTooLarge = sqlite3_memory_used() - state.usedBefore > mostMemory;
        return state.isTooLarge || state.clock.isOver() ? 1 : 0;
    }

    bool allows(int action, char const* first, char const* second) {
        switch (action) {
        case SQLITE_SELECT:
            return ++selects <= selectsOfOurs;
        case SQLITE_READ:
            return allowsReading(first, second);
        case SQLITE_FUNCTION:
            culprits = {inSmallLetters(second)};
            return isFunction(culprits.front()) || isOfTheLog(culprits.front());
        default:
            return false;
        }
    }

    bool allowsReading(std::string_view table, std::string_view column) {
        culprits = {std::string(column), std::string(table)};
        if (table == "messages" || table == "audit") {
            // Without a column the question is whether the table may be used at all.
            return column.empty() || std::ranges::find(needed, column) != needed.end() ||
                   std::ranges::find(readable, column) != readable.end();
        }
        return false;
    }

    Clock::duration const mostTime;
    SearchClock clock;
    sqlite3_int64 usedBefore = 0;
    bool isTooLarge = false;
    bool isPreparing = false;
    int selects = 0;
    // The names that the authorizer was asked about last.
    std::vector<std::string> culprits;
};

ExpressionGuard::ExpressionGuard(Database& database, Clock::duration mostTime)
    : database_(database), state_(std::make_unique<State>(mostTime)) {
    sqlite3* const handle = database_.handle();
    limit(handle);
    defend(handle);
    addBoundedFunctions(database_, state_->clock);
    addFunction(database_, "min", 1, refuseOneValue);
    addFunction(database_, "max", 1, refuseOneValue);
    sqlite3_set_authorizer(handle, State::authorize, state_.get());
    sqlite3_progress_handler(handle, instructionsBetweenLooks, State::look, state_.get());
}

ExpressionGuard::~ExpressionGuard() {
    sqlite3_set_authorizer(database_.handle(), nullptr, nullptr);
    sqlite3_progress_handler(database_.handle(), 0, nullptr, nullptr);
}

Statement ExpressionGuard::prepare(SqlBuilder const& sql) {
    state_->isPreparing = true;
    state_->selects = 0;
    state_->culprits.clear();
    state_->usedBefore = sqlite3_memory_used();
    sqlite3_stmt* prepared = nullptr;
    int const code = sqlite3_prepare_v3(database_.handle(), sql.sql().c_str(),
                                        static_cast<int>(sql.sql().size()), 0, &prepared, nullptr);
    state_->isPreparing = false;
    if (code == SQLITE_OK) {
        return Statement(database_, prepared);
    }
    if (!isExpressionsFault(code)) {
        database_.fail();
    }
    sql.fail(sqlite3_error_offset(database_.handle()), state_->culprits,
             sqlite3_errmsg(database_.handle()));
}

bool ExpressionGuard::step(Statement& statement, SqlBuilder const& sql, Clock::duration& spent) {
    Clock::time_point const start = Clock::now();
    state_->clock.start(start + (state_->mostTime - spent));
    int const code = sqlite3_step(statement.handle());
    state_->clock.stop();
    spent += Clock::now() - start;
    if (code == SQLITE_ROW || code == SQLITE_DONE) {
        return code == SQLITE_ROW;
    }
    std::string const reason = sqlite3_errmsg(database_.handle());
    statement.reset();
    if ((code & 0xff) == SQLITE_INTERRUPT && state_->isTooLarge) {
        sql.fail(0, {}, "needs too much memory; shorter values, or no order, would be right");
    }
    if ((code & 0xff) == SQLITE_INTERRUPT) {
        auto const millis = std::chrono::duration_cast<std::chrono::milliseconds>(state_->mostTime);
        sql.fail(0, {},
                 "takes too long, it was stopped after " + std::to_string(millis.count()) + " ms");
    }
    if (isExpressionsFault(code)) {
        sql.fail(-1, {reason.substr(0, reason.find('('))}, reason);
    }
    throw SqliteFailure(database_.file() + ": " + reason, code);
}

} // namespace zan::server
