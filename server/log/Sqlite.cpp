#include "server/log/Sqlite.h"

#include "server/log/FrameWrites.h"
#include "server/log/RowChecksum.h"

#include <sqlite3.h>

#include <cstring>
#include <span>
#include <utility>

namespace zan::server {

namespace {

constexpr int busyMillis = 3'000;

int flagsOf(Database::Access access) {
    switch (access) {
    case Database::Access::Make:
        return SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE;
    case Database::Access::Write:
        return SQLITE_OPEN_READWRITE;
    case Database::Access::Read:
        break;
    }
    return SQLITE_OPEN_READONLY;
}

char const* reasonOf(int code) {
    switch (code & 0xff) {
    case SQLITE_FULL:
        return "the disk is full";
    case SQLITE_CORRUPT:
        return "the file is damaged";
    case SQLITE_NOTADB:
        return "the file is no database";
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
        return "the file is in use by another process";
    case SQLITE_READONLY:
    case SQLITE_PERM:
        return "the file cannot be written";
    case SQLITE_CANTOPEN:
        return "the file cannot be opened";
    case SQLITE_IOERR:
        return "the file cannot be read or written";
    case SQLITE_NOMEM:
        return "there is not enough memory";
    default:
        return "the database failed";
    }
}

std::string failureText(std::string const& file, sqlite3* handle, int code) {
    std::string text = file + ": " + reasonOf(code) + " (";
    text += handle ? sqlite3_errmsg(handle) : sqlite3_errstr(code);
    int const systemCode = handle ? sqlite3_system_errno(handle) : 0;
    int const plain = code & 0xff;
    if (systemCode != 0 && (plain == SQLITE_IOERR || plain == SQLITE_CANTOPEN)) {
        text += std::string("; ") + std::strerror(systemCode);
    }
    return text + ")";
}

// `row_sum(...)`: the checksum of a row with these values; what is NULL is left out.
void sumOfRow(sqlite3_context* context, int count, sqlite3_value** values) {
    RowChecksum sum;
    for (sqlite3_value* const value : std::span(values, static_cast<std::size_t>(count))) {
        if (sqlite3_value_type(value) == SQLITE_INTEGER) {
            sum.add(std::int64_t{sqlite3_value_int64(value)});
        } else if (sqlite3_value_type(value) != SQLITE_NULL) {
            auto const* const bytes = static_cast<char const*>(sqlite3_value_blob(value));
            auto const size = static_cast<std::size_t>(sqlite3_value_bytes(value));
            sum.add(std::string_view(bytes ? bytes : "", size));
        }
    }
    sqlite3_result_int64(context, sum.value());
}

// SQLite takes an address of null for the value NULL.
char const* started(std::string_view value) {
    return value.data() ? value.data() : "";
}

} // namespace

void Database::Close::operator()(sqlite3* handle) const {
    sqlite3_close_v2(handle);
}

Database::Database(std::string file, Access access) : file_(std::move(file)) {
    sqlite3* handle = nullptr;
    int const code = sqlite3_open_v2(file_.c_str(), &handle, flagsOf(access) | SQLITE_OPEN_NOMUTEX,
                                     logFileSystem());
    handle_.reset(handle);
    if (code != SQLITE_OK) {
        throw SqliteFailure(failureText(file_, handle, code), code);
    }
    sqlite3_extended_result_codes(handle, 1);
    sqlite3_busy_timeout(handle, busyMillis);
    constexpr int traits = SQLITE_UTF8 | SQLITE_DETERMINISTIC | SQLITE_INNOCUOUS;
    if (sqlite3_create_function_v2(handle, "row_sum", -1, traits, nullptr, sumOfRow, nullptr,
                                   nullptr, nullptr) != SQLITE_OK) {
        fail();
    }
}

Database Database::inMemory() {
    Database database;
    sqlite3* handle = nullptr;
    int const code =
        sqlite3_open_v2(":memory:", &handle, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr);
    database.file_ = "memory";
    database.handle_.reset(handle);
    if (code != SQLITE_OK) {
        throw SqliteFailure(failureText(database.file_, handle, code), code);
    }
    return database;
}

bool Database::isReadOnly() const {
    return sqlite3_db_readonly(handle(), "main") == 1;
}

bool Database::isInTransaction() const {
    return sqlite3_get_autocommit(handle()) == 0;
}

void Database::rollBack() {
    if (isInTransaction()) {
        sqlite3_exec(handle(), "ROLLBACK", nullptr, nullptr, nullptr);
    }
}

void Database::execute(std::string const& sql) {
    if (sqlite3_exec(handle(), sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) {
        fail();
    }
}

std::int64_t Database::number(std::string const& sql) {
    Statement statement(*this, sql);
    return statement.step() ? statement.number(0) : 0;
}

void Database::fail() const {
    int const code = sqlite3_extended_errcode(handle());
    throw SqliteFailure(failureText(file_, handle(), code), code);
}

void Database::failWith(std::string const& what) const {
    throw LogFailure(file_ + ": " + what);
}

void Statement::Finalize::operator()(sqlite3_stmt* handle) const {
    sqlite3_finalize(handle);
}

Statement::Statement(Database const& database, std::string_view sql) : database_(&database) {
    sqlite3_stmt* prepared = nullptr;
    if (sqlite3_prepare_v3(database.handle(), sql.data(), static_cast<int>(sql.size()),
                           SQLITE_PREPARE_PERSISTENT, &prepared, nullptr) != SQLITE_OK) {
        database.fail();
    }
    handle_.reset(prepared);
}

Statement::Statement(Database const& database, sqlite3_stmt* prepared)
    : database_(&database), handle_(prepared) {}

Statement& Statement::bind(int index, std::int64_t value) {
    if (sqlite3_bind_int64(handle(), index, value) != SQLITE_OK) {
        database_->fail();
    }
    return *this;
}

Statement& Statement::bindText(int index, std::string_view value) {
    if (sqlite3_bind_text64(handle(), index, started(value), value.size(), SQLITE_STATIC,
                            SQLITE_UTF8) != SQLITE_OK) {
        database_->fail();
    }
    return *this;
}

Statement& Statement::bindBytes(int index, std::string_view value) {
    if (sqlite3_bind_blob64(handle(), index, started(value), value.size(), SQLITE_STATIC) !=
        SQLITE_OK) {
        database_->fail();
    }
    return *this;
}

Statement& Statement::bindNull(int index) {
    if (sqlite3_bind_null(handle(), index) != SQLITE_OK) {
        database_->fail();
    }
    return *this;
}

bool Statement::step() {
    int const code = sqlite3_step(handle());
    if (code == SQLITE_ROW) {
        return true;
    }
    if (code != SQLITE_DONE) {
        std::string const text = failureText(database_->file(), database_->handle(), code);
        reset();
        throw SqliteFailure(text, code);
    }
    return false;
}

void Statement::reset() {
    sqlite3_reset(handle());
}

void Statement::run() {
    step();
    reset();
}

std::int64_t Statement::number(int column) const {
    return sqlite3_column_int64(handle(), column);
}

bool Statement::isNull(int column) const {
    return sqlite3_column_type(handle(), column) == SQLITE_NULL;
}

std::string_view Statement::bytes(int column) const {
    auto const* const data = static_cast<char const*>(sqlite3_column_blob(handle(), column));
    return data ? std::string_view(data,
                                   static_cast<std::size_t>(sqlite3_column_bytes(handle(), column)))
                : std::string_view();
}

std::string_view Statement::text(int column) const {
    auto const* const data = sqlite3_column_text(handle(), column);
    return data ? std::string_view(reinterpret_cast<char const*>(data),
                                   static_cast<std::size_t>(sqlite3_column_bytes(handle(), column)))
                : std::string_view();
}

} // namespace zan::server
