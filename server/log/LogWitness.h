/// A small file beside a log that tells how far the log had come when it last stored something, so
/// that a log which has lost its end is noticed when it is opened. The log's own files cannot tell:
/// SQLite takes up a write-ahead file as far as it is sound, and does without a missing one.
///
/// It is written after the log, without waiting for the disk: it may know less than the log, and
/// never more than was stored.
///
/// Threads: one at a time.
#ifndef ZANENGINE_SERVER_LOG_LOGWITNESS_H
#define ZANENGINE_SERVER_LOG_LOGWITNESS_H

#include "server/log/AheadFile.h"

#include <cstdint>
#include <optional>
#include <string>

namespace zan::server {

class LogWitness {
public:
    struct Testimony {
        std::int64_t identity = 0; ///< of the log
        std::int64_t lastId = 0;
        AheadFile::Place ahead; ///< `end` 0: the write-ahead file was not needed
    };

    explicit LogWitness(std::string file) : file_(std::move(file)) {}
    ~LogWitness();
    LogWitness(LogWitness const&) = delete;
    LogWitness& operator=(LogWitness const&) = delete;

    /// Nothing when there is no file, or one that tells nothing.
    std::optional<Testimony> read() const;

    /// False with `errno` when it cannot be written.
    bool write(Testimony const& testimony) noexcept;

    std::string const& file() const { return file_; }

private:
    std::string const file_;
    int descriptor_ = -1;
};

/// Compares what the witness says with the files of a log that is not open. Throws `LogFailure`
/// when the log has lost what it had stored.
void requireNothingLost(std::string const& logFile, LogWitness const& witness);

/// The same with what only the open log tells.
void requireNothingLost(std::string const& logFile, LogWitness const& witness,
                        std::int64_t identity, std::int64_t lastId);

} // namespace zan::server

#endif
