/// SQLite behind objects that clean up after themselves, and failures that tell the file.
///
/// Threads: a database and its statements belong to one thread at a time.
#ifndef ZANENGINE_SERVER_LOG_SQLITE_H
#define ZANENGINE_SERVER_LOG_SQLITE_H

#include "server/log/MessageLog.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

struct sqlite3;
struct sqlite3_stmt;

namespace zan::server {

/// A failure of the database itself, with SQLite's own code.
class SqliteFailure : public LogFailure {
public:
    SqliteFailure(std::string const& text, int code) : LogFailure(text), code_(code) {}

    /// Without the details that extended codes have.
    int code() const { return code_ & 0xff; }

private:
    int code_;
};

/// One connection to a database file, or to one in memory.
class Database {
public:
    enum class Access { Make, Write, Read };

    /// Throws `SqliteFailure`. SQL has one function more here, `row_sum(...)`: the checksum of a
    /// row with these values, without those that are NULL.
    Database(std::string file, Access access);

    static Database inMemory();

    bool isReadOnly() const;
    bool isInTransaction() const;

    /// After a failure; SQLite has rolled back by itself after some.
    void rollBack();

    void execute(std::string const& sql);

    /// The one number that a statement gives.
    std::int64_t number(std::string const& sql);

    /// Throws what SQLite says about the last failure.
    [[noreturn]] void fail() const;

    /// Throws a failure of this file with a reason of ours.
    [[noreturn]] void failWith(std::string const& what) const;

    std::string const& file() const { return file_; }
    sqlite3* handle() const { return handle_.get(); }

private:
    struct Close {
        void operator()(sqlite3* handle) const;
    };

    Database() = default;

    std::string file_;
    std::unique_ptr<sqlite3, Close> handle_;
};

/// A statement that is prepared once and used often.
class Statement {
public:
    /// The database has to outlive the statement.
    Statement(Database const& database, std::string_view sql);

    /// Takes over a statement that was prepared elsewhere.
    Statement(Database const& database, sqlite3_stmt* prepared);

    // What is bound as a text or as bytes has to stay until the statement is reset.
    Statement& bind(int index, std::int64_t value);
    Statement& bindText(int index, std::string_view value);
    Statement& bindBytes(int index, std::string_view value);
    Statement& bindNull(int index);

    /// True when there is a row. Resets the statement before it throws.
    bool step();
    void reset();

    /// Steps over the only row there can be, or none.
    void run();

    std::int64_t number(int column) const;
    bool isNull(int column) const;

    /// Valid until the next step or reset.
    std::string_view bytes(int column) const;

    /// As bytes, numbers as they are written. Valid until the next step or reset.
    std::string_view text(int column) const;

    sqlite3_stmt* handle() const { return handle_.get(); }

private:
    struct Finalize {
        void operator()(sqlite3_stmt* handle) const;
    };

    Database const* database_;
    std::unique_ptr<sqlite3_stmt, Finalize> handle_;
};

/// Resets a statement at the end of a scope, however that is left.
class StatementUse {
public:
    explicit StatementUse(Statement& statement) : statement_(statement) {}
    ~StatementUse() { statement_.reset(); }
    StatementUse(StatementUse const&) = delete;
    StatementUse& operator=(StatementUse const&) = delete;

private:
    Statement& statement_;
};

} // namespace zan::server

#endif
