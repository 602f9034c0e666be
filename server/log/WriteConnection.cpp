#include "server/log/WriteConnection.h"

#include "server/log/LogSchema.h"

#include <cerrno>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <limits>
#include <optional>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace zan::server {

namespace {

// A commit that finds more pages than this in the write-ahead log moves them into the file itself.
// Usually that was done before, when nobody had to wait for it.
constexpr char const* mostPagesAhead = "16000";

// To look for the file takes a good part of the time of a small commit, so that commits that follow
// each other closely do not look each time.
constexpr std::chrono::milliseconds lookInterval{50};

// More than most messages: a disk that has room for less has not healed.
constexpr std::size_t trialSize = 16 * 1024;

// The database itself tells what it tried last, which is not what is wrong.
[[noreturn]] void failToOpen(std::string const& file, SqliteFailure const& failure) {
    std::error_code error;
    auto const folder = std::filesystem::absolute(file, error).parent_path();
    if (faccessat(AT_FDCWD, folder.c_str(), W_OK | X_OK, AT_EACCESS) != 0) {
        throw LogFailure(file + ": the folder cannot be written (" + std::strerror(errno) + ")");
    }
    throw failure;
}

Database openFile(std::string const& file) {
    try {
        return Database(file, Database::Access::Make);
    } catch (SqliteFailure const& failure) {
        failToOpen(file, failure);
    }
}

Database opened(LogSettings const& settings) {
    Database database = openFile(settings.file);
    if (database.isReadOnly()) {
        database.failWith("the file cannot be written; it and its folder have to be writable");
    }
    int const version = checkedVersion(database);
    database.execute("PRAGMA journal_mode=WAL");
    bringUp(database, version);
    database.execute(settings.survivesPowerFailure ? "PRAGMA synchronous=FULL"
                                                   : "PRAGMA synchronous=NORMAL");
    database.execute(std::string("PRAGMA wal_autocheckpoint=") + mostPagesAhead);
    return database;
}

// Which file it is, whatever its name; nothing when there is none under that name.
std::optional<std::pair<dev_t, ino_t>> identityOf(std::string const& file) {
    struct stat found {};
    if (stat(file.c_str(), &found) != 0) {
        return std::nullopt;
    }
    return std::pair(found.st_dev, found.st_ino);
}

} // namespace

WriteConnection::WriteConnection(LogSettings const& settings)
    : database_(opened(settings)), begin_(database_, "BEGIN IMMEDIATE"),
      commit_(database_, "COMMIT"), rows_(database_),
      identity_(identityOf(settings.file).value_or(std::pair<dev_t, ino_t>())) {}

void WriteConnection::requireFile() {
    auto const now = std::chrono::steady_clock::now();
    if (now < nextLook_) {
        return;
    }
    if (identityOf(database_.file()) != identity_) {
        database_.failWith("the file was moved away or deleted while the engine runs; it has to be "
                           "back in its place");
    }
    nextLook_ = now + lookInterval;
}

void WriteConnection::insertAlone(LogRow const& row, std::string const& time) {
    change([&] { rows_.insert(row, time); });
}

void WriteConnection::tryOut() {
    LogRow trial;
    trial.entry.id = std::numeric_limits<long>::max();
    trial.entry.text.assign(trialSize, ' ');
    transact([&](WriteConnection& connection) {
        hasFailed_ = false; // unless this fails too
        connection.rows().insert(trial, "");
        Statement(database_, "DELETE FROM messages WHERE id=?1").bind(1, trial.entry.id).run();
    });
}

void WriteConnection::setMeta(std::string_view name, std::int64_t value) {
    Statement statement(database_, "INSERT OR REPLACE INTO meta VALUES(?1,?2)");
    statement.bindText(1, name).bind(2, value).run();
}

std::int64_t WriteConnection::meta(std::string_view name) {
    Statement statement(database_, "SELECT value FROM meta WHERE name=?1");
    return statement.bindText(1, name).step() ? statement.number(0) : 0;
}

} // namespace zan::server
