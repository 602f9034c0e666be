#include "server/log/OrderIndexFile.h"

#include "server/log/OrderKeys.h"

#include <fstream>

namespace zan::server {

namespace {

constexpr std::int64_t layout = 1;
constexpr int rowsOfAStep = 500;

// Changes when the machine starts: what was not written to the disk by then may be lost.
std::string bootOfMachine() {
    std::string boot;
    std::ifstream("/proc/sys/kernel/random/boot_id") >> boot;
    return boot.empty() ? "unknown" : boot;
}

Database opened(std::string const& file) {
    Database database(file, Database::Access::Make);
    database.execute("PRAGMA journal_mode=WAL");
    database.execute("CREATE TABLE IF NOT EXISTS orders(key TEXT, id INTEGER, "
                     "PRIMARY KEY(key, id)) WITHOUT ROWID;"
                     "CREATE TABLE IF NOT EXISTS meta(name TEXT PRIMARY KEY, value) WITHOUT ROWID");
    return database;
}

} // namespace

OrderIndexFile::OrderIndexFile(std::string const& file)
    : database_(opened(file)), begin_(database_, "BEGIN"), commit_(database_, "COMMIT"),
      add_(database_, "INSERT OR IGNORE INTO orders VALUES(?1,?2)"),
      find_(database_, "SELECT id FROM orders WHERE key=?1"),
      readMeta_(database_, "SELECT value FROM meta WHERE name=?1"),
      writeMeta_(database_, "INSERT OR REPLACE INTO meta VALUES(?1,?2)"), watch_(file),
      reached_(static_cast<long>(meta("reached"))), edits_(meta("edits")) {}

bool OrderIndexFile::fits(std::int64_t logIdentity, long lastOfLog) {
    return meta("layout") == layout && meta("log") == logIdentity && reached_ <= lastOfLog &&
           (meta("closed") == 1 || boot() == bootOfMachine());
}

void OrderIndexFile::start(std::int64_t logIdentity) {
    begin_.run();
    setMeta("layout", layout);
    setMeta("log", logIdentity);
    setMeta("closed", 0);
    std::string const boot = bootOfMachine();
    writeMeta_.bindText(1, "boot").bindText(2, boot).run();
    commit_.run();
    moveToDisk();
    database_.execute("PRAGMA synchronous=OFF");
}

void OrderIndexFile::close() {
    database_.execute("PRAGMA synchronous=FULL");
    setMeta("closed", 1);
    moveToDisk();
}

bool OrderIndexFile::takeStep(ReadConnection& log) {
    long const reached = reached_;
    std::int64_t const edits = edits_;
    begin_.run();
    try {
        takeMessages(log);
        takeEdits(log);
        bool const hasMore = reached_ != reached || edits_ != edits;
        if (hasMore) {
            setMeta("reached", reached_);
            setMeta("edits", edits_);
        }
        commit_.run();
        return hasMore;
    } catch (...) {
        reached_ = reached;
        edits_ = edits;
        database_.rollBack();
        throw;
    }
}

std::vector<long> OrderIndexFile::find(std::string const& key) {
    StatementUse const use(find_);
    find_.bindText(1, key);
    std::vector<long> ids;
    while (find_.step()) {
        ids.push_back(static_cast<long>(find_.number(0)));
    }
    return ids;
}

void OrderIndexFile::moveToDisk() {
    database_.execute("PRAGMA wal_checkpoint(TRUNCATE)");
}

void OrderIndexFile::takeMessages(ReadConnection& log) {
    Statement& rows = log.statement("SELECT id,text FROM messages WHERE id>?1 ORDER BY id "
                                    "LIMIT ?2");
    StatementUse const use(rows);
    rows.bind(1, reached_).bind(2, rowsOfAStep);
    while (rows.step()) {
        reached_ = static_cast<long>(rows.number(0));
        addKeys(reached_, rows.bytes(1));
    }
}

// An edited text may name other orders; what it named before is found out when it is read.
void OrderIndexFile::takeEdits(ReadConnection& log) {
    Statement& rows =
        log.statement("SELECT audit.entry,messages.id,messages.text FROM audit LEFT JOIN messages "
                      "ON messages.id=audit.id WHERE audit.entry>?1 ORDER BY audit.entry LIMIT ?2");
    StatementUse const use(rows);
    rows.bind(1, edits_).bind(2, rowsOfAStep);
    while (rows.step()) {
        edits_ = rows.number(0);
        addKeys(static_cast<long>(rows.number(1)), rows.bytes(2));
    }
}

void OrderIndexFile::addKeys(long id, std::string_view text) {
    for (OrderKeys const& order : ordersOf(text)) {
        for (std::string const& key : order) {
            add_.bindText(1, key).bind(2, id).run();
        }
    }
}

std::int64_t OrderIndexFile::meta(std::string_view name) {
    StatementUse const use(readMeta_);
    return readMeta_.bindText(1, name).step() ? readMeta_.number(0) : 0;
}

std::string OrderIndexFile::boot() {
    StatementUse const use(readMeta_);
    return readMeta_.bindText(1, "boot").step() ? std::string(readMeta_.bytes(0)) : "";
}

void OrderIndexFile::setMeta(std::string_view name, std::int64_t value) {
    writeMeta_.bindText(1, name).bind(2, value).run();
}

} // namespace zan::server
