#include "server/log/ReadPool.h"

namespace zan::server {

namespace {

constexpr std::size_t mostKept = 4;

} // namespace

ReadConnection::ReadConnection(std::string const& file,
                               ExpressionGuard::Clock::duration longestSearch)
    : database_(file, Database::Access::Read), guard_(database_, longestSearch) {
    // What is sorted are ids; a full disk must not stop that.
    database_.execute("PRAGMA temp_store=MEMORY");
}

Statement& ReadConnection::statement(std::string const& sql) {
    auto found = statements_.find(sql);
    if (found == statements_.end()) {
        found = statements_.emplace(sql, Statement(database_, sql)).first;
    }
    return found->second;
}

// A read transaction begins with its first read; the number of rows in a table of one page is the
// cheapest.
void ReadConnection::begin() {
    statement("BEGIN").run();
    statement("SELECT 1 FROM meta WHERE name='identity'").run();
}

void ReadConnection::end() {
    if (database_.isInTransaction()) {
        statement("COMMIT").run();
    }
}

ReadPool::Reader::Reader(ReadPool& pool) : pool_(pool), connection_(pool.take()) {
    connection_->begin();
}

ReadPool::Reader::~Reader() {
    try {
        connection_->end();
    } catch (LogFailure const&) {
        return;
    }
    pool_.giveBack(std::move(connection_));
}

std::unique_ptr<ReadConnection> ReadPool::take() {
    {
        std::lock_guard const lock(mutex_);
        if (!free_.empty()) {
            auto connection = std::move(free_.back());
            free_.pop_back();
            return connection;
        }
    }
    return std::make_unique<ReadConnection>(file_, longestSearch_);
}

void ReadPool::giveBack(std::unique_ptr<ReadConnection> connection) {
    std::lock_guard const lock(mutex_);
    if (free_.size() < mostKept) {
        free_.push_back(std::move(connection));
    }
}

} // namespace zan::server
