/// The file of an index of orders.
///
/// Threads: one at a time.
#ifndef ZANENGINE_SERVER_LOG_ORDERINDEXFILE_H
#define ZANENGINE_SERVER_LOG_ORDERINDEXFILE_H

#include "server/log/FileWatch.h"
#include "server/log/ReadPool.h"
#include "server/log/Sqlite.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace zan::server {

class OrderIndexFile {
public:
    explicit OrderIndexFile(std::string const& file);

    /// Does the file still lie under its name, with all that was written into it?
    bool isInPlace() { return watch_.look() == FileWatch::State::InPlace; }

    /// Was it made from this log, of which it knows nothing that is not there, and is everything
    /// that it ever held still in it?
    bool fits(std::int64_t logIdentity, long lastOfLog);

    /// From here to `close` the content is as good as the machine's memory, and says so.
    void start(std::int64_t logIdentity);
    void close();

    /// Up to which row of the log it has come.
    long reached() const { return reached_; }

    /// Takes up some of what the reader sees and the index has not; false when that is nothing.
    bool takeStep(ReadConnection& log);

    /// The messages that have the key, or had it before an edit.
    std::vector<long> find(std::string const& key);

private:
    void moveToDisk();
    void takeMessages(ReadConnection& log);
    void takeEdits(ReadConnection& log);
    void addKeys(long id, std::string_view text);
    std::int64_t meta(std::string_view name);
    std::string boot();
    void setMeta(std::string_view name, std::int64_t value);

    Database database_;
    Statement begin_;
    Statement commit_;
    Statement add_;
    Statement find_;
    Statement readMeta_;
    Statement writeMeta_;
    FileWatch watch_;
    long reached_ = 0;
    std::int64_t edits_ = 0;
};

} // namespace zan::server

#endif
