/// Connections that read, kept for the next reader.
///
/// Threads: the pool any, each connection one at a time.
#ifndef ZANENGINE_SERVER_LOG_READPOOL_H
#define ZANENGINE_SERVER_LOG_READPOOL_H

#include "server/log/ExpressionGuard.h"
#include "server/log/Sqlite.h"

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace zan::server {

class ReadConnection {
public:
    ReadConnection(std::string const& file, ExpressionGuard::Clock::duration longestSearch);

    Database& database() { return database_; }
    ExpressionGuard& guard() { return guard_; }

    /// The same statement for the same text, prepared once.
    Statement& statement(std::string const& sql);

    /// Everything that is read until `end` shows the log at one moment.
    void begin();
    void end();

private:
    Database database_;
    ExpressionGuard guard_;
    std::map<std::string, Statement> statements_;
};

class ReadPool {
public:
    /// The file has to be open for writing as long as the pool is in use.
    explicit ReadPool(LogSettings const& settings)
        : file_(settings.file), longestSearch_(settings.longestSearch) {}

    /// A reader has a connection of its own, and one moment of the log, from here to its end.
    class Reader {
    public:
        explicit Reader(ReadPool& pool);
        ~Reader();
        Reader(Reader const&) = delete;
        Reader& operator=(Reader const&) = delete;

        ReadConnection& operator*() const { return *connection_; }
        ReadConnection* operator->() const { return connection_.get(); }

    private:
        ReadPool& pool_;
        std::unique_ptr<ReadConnection> connection_;
    };

private:
    std::unique_ptr<ReadConnection> take();
    void giveBack(std::unique_ptr<ReadConnection> connection);

    std::string const file_;
    std::chrono::milliseconds const longestSearch_;
    std::mutex mutex_;
    std::vector<std::unique_ptr<ReadConnection>> free_;
};

} // namespace zan::server

#endif
