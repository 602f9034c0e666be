#include "server/log/LogSchema.h"

#include "infra/WrongConfigurationException.h"
#include "server/log/LogClock.h"

#include <sqlite3.h>

#include <iterator>
#include <random>

namespace zan::server {

namespace {

// Marks the file as a log of ours: "ZANL".
constexpr std::int64_t applicationId = 0x5a414e4c;

// What leads from each version to the next; the first makes version 1. Steps that were published
// stay as they are.
constexpr char const* steps[] = {
    R"(CREATE TABLE messages(
         id INTEGER PRIMARY KEY, time TEXT NOT NULL, stream INTEGER NOT NULL, type TEXT NOT NULL,
         seq INTEGER NOT NULL, origin INTEGER NOT NULL, next_out INTEGER NOT NULL,
         next_in INTEGER NOT NULL, text BLOB NOT NULL, note TEXT NOT NULL,
         checksum INTEGER NOT NULL);
       CREATE TABLE marks(
         subscriber TEXT NOT NULL, stream INTEGER NOT NULL, id INTEGER NOT NULL,
         PRIMARY KEY(subscriber, stream)) WITHOUT ROWID;
       CREATE TABLE meta(name TEXT PRIMARY KEY, value NOT NULL) WITHOUT ROWID)",
    R"(ALTER TABLE messages ADD COLUMN wire BLOB;
       ALTER TABLE messages ADD COLUMN hidden INTEGER NOT NULL DEFAULT 0;
       CREATE TABLE audit(
         entry INTEGER PRIMARY KEY, edited TEXT NOT NULL, user TEXT NOT NULL,
         action TEXT NOT NULL, id INTEGER NOT NULL, time TEXT NOT NULL, stream INTEGER NOT NULL,
         type TEXT NOT NULL, seq INTEGER NOT NULL, text BLOB NOT NULL, note TEXT NOT NULL))",
    R"(ALTER TABLE marks ADD COLUMN checksum INTEGER NOT NULL DEFAULT 0;
       ALTER TABLE meta ADD COLUMN checksum INTEGER NOT NULL DEFAULT 0;
       ALTER TABLE audit ADD COLUMN checksum INTEGER NOT NULL DEFAULT 0;
       INSERT OR IGNORE INTO meta(name,value) VALUES('reset_asked',0);
       UPDATE marks SET checksum=row_sum(subscriber,stream,id);
       UPDATE meta SET checksum=row_sum(name,value);
       UPDATE audit
         SET checksum=row_sum(entry,edited,user,action,id,time,stream,type,seq,text,note);
       UPDATE messages
         SET checksum=row_sum(id,time,stream,type,seq,origin,next_out,next_in,text,note,wire,-1)
         WHERE hidden<>0)"};

constexpr int currentVersion = static_cast<int>(std::size(steps));

[[noreturn]] void refuse(Database const& database, std::string const& reason) {
    throw WrongConfigurationException(database.file() + ": " + reason);
}

bool isEmpty(Database& database) {
    return database.number("SELECT count(*) FROM sqlite_schema") == 0;
}

int versionOf(Database& database) {
    try {
        auto const version = static_cast<int>(database.number("PRAGMA user_version"));
        bool const isLog = database.number("PRAGMA application_id") == applicationId;
        if (!isLog && (version != 0 || !isEmpty(database))) {
            refuse(database, "is the database of another program, not a message log; another data "
                             "folder would be right");
        }
        return version;
    } catch (SqliteFailure const& failure) {
        if (failure.code() == SQLITE_NOTADB) {
            refuse(database, "is no message log, but a file of another kind; another data folder "
                             "would be right");
        }
        throw;
    }
}

void refuseNewer(Database const& database, int version) {
    if (version > currentVersion) {
        refuse(database, "was written by a newer version: its layout is " +
                             std::to_string(version) + ", and this version knows layouts up to " +
                             std::to_string(currentVersion) +
                             "; the newer version, or another data folder, would be right");
    }
}

// The identity ties the files beside the log to it.
void startNumbering(Database& database) {
    std::random_device random;
    auto const identity = static_cast<std::int64_t>(random()) << 31 ^ random();
    database.execute("INSERT INTO meta VALUES('identity'," + std::to_string(identity) +
                     "),('numbering_first',1),('numbering_began'," + std::to_string(nowMillis()) +
                     ")");
}

void takeSteps(Database& database, int version) {
    if (version == 0) {
        database.execute("PRAGMA application_id=" + std::to_string(applicationId));
    }
    for (int step = version; step < currentVersion; ++step) {
        database.execute(steps[step]);
        if (step == 0) {
            startNumbering(database);
        }
    }
    database.execute("PRAGMA user_version=" + std::to_string(currentVersion));
}

} // namespace

std::int64_t readMeta(Database const& database, Statement& statement, std::string_view name) {
    if (!statement.bindText(1, name).step()) {
        database.failWith("the value '" + std::string(name) + "' is missing");
    }
    if (statement.number(1) != 1) {
        database.failWith("the value '" + std::string(name) +
                          "' is damaged: its checksum does not fit what it holds");
    }
    return statement.number(0);
}

void requireSoundTables(Database& database) {
    Statement known(database, metaByName);
    for (char const* const name :
         {"identity", "numbering_first", "numbering_began", "reset_asked"}) {
        StatementUse const use(known);
        readMeta(database, known, name);
    }
    Statement meta(database, "SELECT name FROM meta WHERE checksum<>row_sum(name,value)");
    if (meta.step()) {
        database.failWith("the value '" + std::string(meta.bytes(0)) +
                          "' is damaged: its checksum does not fit what it holds");
    }
    Statement marks(database, "SELECT subscriber,stream FROM marks "
                              "WHERE checksum<>row_sum(subscriber,stream,id)");
    if (marks.step()) {
        database.failWith("the mark of '" + std::string(marks.bytes(0)) + "' in stream " +
                          std::to_string(marks.number(1)) +
                          " is damaged: its checksum does not fit what it holds");
    }
}

int checkedVersion(Database& database) {
    int const version = versionOf(database);
    refuseNewer(database, version);
    return version;
}

void bringUp(Database& database, int version) {
    if (version == currentVersion) {
        return;
    }
    database.execute("BEGIN IMMEDIATE");
    takeSteps(database, version);
    database.execute("COMMIT");
}

} // namespace zan::server
