#include "server/log/WriteConnection.h"

#include "server/log/FrameWrites.h"
#include "server/log/LogSchema.h"
#include "server/log/PrivateFile.h"

#include <sqlite3.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <limits>
#include <system_error>

#include <fcntl.h>
#include <unistd.h>

namespace zan::server {

namespace {

// A commit that finds more than this in the write-ahead file moves it into the log itself. Usually
// that was done before, when nobody had to wait for it.
constexpr std::int64_t mostBytesAhead = 64 * 1024 * 1024;

// To look for the files takes a good part of the time of a small commit that does not wait for the
// disk, so that such commits do not look each time when they follow each other closely.
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

// All that may lie beside a log; a hot journal would be taken up as well.
void makeFilesPrivate(std::string const& file) {
    for (char const* const ending : {"", "-wal", "-journal", ".orders", ".orders-wal",
                                     ".orders-journal", ".reserve", ".last"}) {
        makePrivate(file + ending);
    }
}

Database opened(LogSettings const& settings, LogWitness const& witness) {
    makeFilesPrivate(settings.file);
    requireNothingLost(settings.file, witness);
    Database database = openFile(settings.file);
    if (database.isReadOnly()) {
        database.failWith("the file cannot be written; it and its folder have to be writable");
    }
    checkedVersion(database);
    database.execute("PRAGMA journal_mode=WAL");
    database.execute(settings.survivesPowerFailure ? "PRAGMA synchronous=FULL"
                                                   : "PRAGMA synchronous=NORMAL");
    // Pages are written once, at the end of a transaction, or the end of the write-ahead file would
    // not tell what a commit left.
    database.execute("PRAGMA cache_spill=OFF");
    database.execute("PRAGMA wal_autocheckpoint=0");
    return database;
}

std::shared_ptr<AheadFile> takenUp(Database& database) {
    int const version = checkedVersion(database);
    std::shared_ptr<AheadFile> ahead = aheadFileOf(database.handle());
    if (!ahead) {
        database.failWith("there can be no write-ahead file beside it");
    }
    try {
        ahead->start();
    } catch (std::system_error const& failure) {
        throw LogFailure(ahead->path() + ": cannot be taken up (" + failure.what() + ")");
    }
    bringUp(database, version);
    ahead->accept();
    requireSoundTables(database);
    return ahead;
}

std::string textOf(FileWatch::State state, std::string const& path) {
    switch (state) {
    case FileWatch::State::InPlace:
        return {};
    case FileWatch::State::Missing:
        return path + ": the file was moved away or deleted while the engine runs; it has to be "
                      "back in its place";
    case FileWatch::State::Replaced:
        return path + ": another file was put in its place while the engine runs; the one that was "
                      "there has to be back";
    case FileWatch::State::Cut:
        break;
    }
    return path +
           ": the file was cut or overwritten while the engine runs; stop the engine, and put "
           "back all files of the log as they were";
}

} // namespace

WriteConnection::WriteConnection(LogSettings const& settings)
    : witness_(settings.file + ".last"), isDurable_(settings.survivesPowerFailure),
      database_(opened(settings, witness_)), ahead_(takenUp(database_)),
      begin_(database_, "BEGIN IMMEDIATE"), commit_(database_, "COMMIT"), rows_(database_),
      identity_(meta("identity")),
      lastId_(
          static_cast<long>(database_.number("SELECT id FROM messages ORDER BY id DESC LIMIT 1"))),
      log_(settings.file) {
    requireNothingLost(settings.file, witness_, identity_, lastId_);
    testify(ahead_->place());
    ahead_->watchRestarts([this] { return testify({}); });
    if (isDurable_) {
        ahead_->watchCommits([this] { return look(); });
    }
}

// What is not sound is left as it is, for the next start to tell of it.
WriteConnection::~WriteConnection() {
    ahead_->watchCommits({});
    ahead_->watchRestarts({});
    bool const isInPlace = look();
    bool const isSound = isInPlace || isAheadLost();
    bool const isMoved = isSound && ahead_->settle() && moveAhead("PASSIVE") && testify({});
    if (!isInPlace || !isMoved) {
        sqlite3_db_config(database_.handle(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
    }
}

// True when everything is in its place.
bool WriteConnection::look() {
    if (isLost_) {
        return false;
    }
    FileWatch::State const log = log_.look();
    FileWatch::State ahead = FileWatch::State::InPlace;
    FoundFile const found = fileAt(ahead_->path());
    if (!ahead_->isIntact()) {
        ahead = FileWatch::State::Cut;
    } else if (!found.isThere) {
        ahead = FileWatch::State::Missing;
    } else if (!ahead_->isSameFile(found.device, found.number)) {
        ahead = FileWatch::State::Replaced;
    }
    // What was moved into the log already is lost to nobody.
    isLost_ = log == FileWatch::State::Cut || (ahead == FileWatch::State::Cut && !isMoved_);
    std::string const what =
        log != FileWatch::State::InPlace ? textOf(log, log_.path()) : textOf(ahead, ahead_->path());
    if (what != finding_) {
        finding_ = news_ = what;
    }
    return finding_.empty();
}

// Throws when a file is not in its place any more: what was written into it then would be lost.
void WriteConnection::requireFiles() {
    auto const now = std::chrono::steady_clock::now();
    if (isDurable_ || now >= nextLook_ || !finding_.empty()) {
        if (!look()) {
            throw LogFailure(finding_);
        }
        nextLook_ = now + lookInterval;
    }
    if (!ahead_->settle()) {
        throw LogFailure(ahead_->path() + ": what is in it cannot be made sure of (" +
                         std::strerror(errno) + ")");
    }
    if (!isTestified_ && !testify(isMoved_ ? AheadFile::Place() : ahead_->place())) {
        throw LogFailure(witness_.file() + ": cannot be written (" + std::strerror(errno) + ")");
    }
}

void WriteConnection::insertAlone(LogRow const& row, std::string const& time) {
    change([&] { rows_.insert(row, time); }, row.entry.id);
}

// Nothing of a commit that failed may be found by the next process.
void WriteConnection::takeBack(LogFailure const& failure) {
    bool const wasWritten = ahead_->hasOpenEnd();
    bool const isGone = ahead_->undo();
    std::string const what = finding_.empty() ? failure.what() : finding_;
    rescueAhead();
    if (wasWritten && !isGone) {
        throw LogFailure(what + "; whether the log has it is known when " + ahead_->path() +
                         " can be written again");
    }
    if (!finding_.empty()) {
        throw LogFailure(what);
    }
}

void WriteConnection::accept(long lastId) {
    ahead_->accept();
    ++changes_;
    lastId_ = lastId > 0 ? lastId : lastId_;
    testify(ahead_->place());
    if (ahead_->place().end > mostBytesAhead && look() && moveAhead("PASSIVE")) {
        testify({});
    }
}

bool WriteConnection::testify(AheadFile::Place ahead) {
    isMoved_ = ahead.end == 0;
    isTestified_ = witness_.write({identity_, lastId_, ahead});
    return isTestified_;
}

// True when all of it is in the log itself. A failure costs nothing: it stays where it is.
bool WriteConnection::moveAhead(char const* how) {
    try {
        Statement move(database_, std::string("PRAGMA wal_checkpoint(") + how + ")");
        return move.step() && move.number(0) == 0 && move.number(1) == move.number(2);
    } catch (LogFailure const&) {
        return false;
    }
}

void WriteConnection::movedAhead(std::uint64_t changes) {
    std::lock_guard const lock(mutex_);
    if (changes == changes_) {
        testify({});
    }
}

bool WriteConnection::watchFiles() {
    std::lock_guard const lock(mutex_);
    bool const isSound = look();
    if (!isSound && !hasFailed_.exchange(true)) {
        rescueAhead();
    }
    return isSound;
}

std::string WriteConnection::takeFinding() {
    std::lock_guard const lock(mutex_);
    return std::exchange(news_, {});
}

// The name alone: all that was written is still there for this process.
bool WriteConnection::isAheadLost() const {
    return !isLost_ && !finding_.empty() && finding_.starts_with(ahead_->path());
}

// What was stored lies in a file that the next process will not find.
void WriteConnection::rescueAhead() {
    if (isAheadLost() && !isMoved_ && moveAhead("PASSIVE")) {
        testify({});
    }
}

// Only when it is certain that nothing of the old one is needed.
void WriteConnection::restoreAhead() {
    std::lock_guard const lock(mutex_);
    if (look() || !isAheadLost() || !moveAhead("PASSIVE")) {
        return;
    }
    if (testify({}) && moveAhead("TRUNCATE") && !fileAt(ahead_->path()).isThere) {
        ahead_->replace();
    }
}

void WriteConnection::tryOut() {
    LogRow trial;
    trial.entry.id = std::numeric_limits<long>::max();
    trial.entry.text.assign(trialSize, ' ');
    restoreAhead();
    transact([&](WriteConnection& connection) {
        hasFailed_ = false; // unless this fails too
        connection.rows().insert(trial, "");
        Statement(database_, "DELETE FROM messages WHERE id=?1").bind(1, trial.entry.id).run();
    });
}

void WriteConnection::setMeta(std::string_view name, std::int64_t value) {
    Statement statement(database_, "INSERT OR REPLACE INTO meta VALUES(?1,?2,row_sum(?1,?2))");
    statement.bindText(1, name).bind(2, value).run();
}

std::int64_t WriteConnection::meta(std::string_view name) {
    Statement statement(database_, metaByName);
    return readMeta(database_, statement, name);
}

} // namespace zan::server
