#include "server/log/LogWitness.h"

#include "server/log/FileWatch.h"
#include "server/log/MessageLog.h"
#include "server/log/PrivateFile.h"
#include "server/log/RowChecksum.h"

#include <array>
#include <cstring>
#include <system_error>

#include <fcntl.h>
#include <unistd.h>

namespace zan::server {

namespace {

constexpr std::int64_t witnessLayout = 0x5a414e5701; // "ZANW", version 1

// As it lies in the file, on the machine that has the log.
struct Record {
    std::array<std::int64_t, 5> words{};
    std::int64_t checksum = 0;

    std::int64_t sum() const {
        RowChecksum sum;
        for (std::int64_t const word : words) {
            sum.add(word);
        }
        return sum.value();
    }
};

Record recordOf(LogWitness::Testimony const& testimony) {
    Record record;
    record.words = {witnessLayout, testimony.identity, testimony.lastId,
                    static_cast<std::int64_t>(testimony.ahead.salts), testimony.ahead.end};
    record.checksum = record.sum();
    return record;
}

std::string remedy(LogWitness const& witness) {
    return "; put back all files of the log as they were, or remove " + witness.file() +
           " to go on without them";
}

[[noreturn]] void fail(std::string const& file, std::string const& what) {
    throw LogFailure(file + ": " + what);
}

AheadScan scanOf(std::string const& path) {
    int const file = open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    if (file < 0) {
        return {};
    }
    try {
        AheadScan const scan = scanAhead(file);
        close(file);
        return scan;
    } catch (std::system_error const& failure) {
        close(file);
        fail(path, std::string("cannot be read (") + failure.what() + ")");
    }
}

[[noreturn]] void failAsDamaged(std::string const& path, AheadScan const& scan,
                                LogWitness const& witness) {
    std::string const cut = "cut it to " + std::to_string(scan.committedEnd) +
                            " bytes (truncate --size) and remove " + witness.file();
    if (!scan.hasHead) {
        fail(path, "its beginning is damaged, and nothing in it can be taken up; put back the file "
                   "as it was, or, to go on without what it holds, " +
                       cut);
    }
    fail(path, "frame " + std::to_string(scan.badFrame) + " is damaged, and " +
                   std::to_string(scan.commitsBehind) +
                   " commits stand behind it that cannot be taken up; put back the file as it was, "
                   "or, to go on without them, " +
                   cut);
}

[[noreturn]] void failAsLost(std::string const& path, AheadScan const& scan,
                             AheadFile::Place stored, LogWitness const& witness) {
    if (scan.isDamaged()) {
        failAsDamaged(path, scan, witness);
    }
    if (!scan.hasHead) {
        fail(path, "is missing or empty, with messages that were stored in it" + remedy(witness));
    }
    if (scan.salts != stored.salts) {
        fail(path, "is not the file that was written last" + remedy(witness));
    }
    fail(path, "can be taken up to byte " + std::to_string(scan.committedEnd) +
                   ", and commits were stored up to byte " + std::to_string(stored.end) +
                   remedy(witness));
}

} // namespace

LogWitness::~LogWitness() {
    if (descriptor_ >= 0) {
        close(descriptor_);
    }
}

std::optional<LogWitness::Testimony> LogWitness::read() const {
    int const file = open(file_.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    if (file < 0) {
        return std::nullopt;
    }
    Record record;
    ssize_t const size = pread(file, &record, sizeof record, 0);
    close(file);
    if (size != static_cast<ssize_t>(sizeof record) || record.words[0] != witnessLayout ||
        record.checksum != record.sum()) {
        return std::nullopt;
    }
    return Testimony{record.words[1],
                     record.words[2],
                     {static_cast<std::uint64_t>(record.words[3]), record.words[4]}};
}

bool LogWitness::write(Testimony const& testimony) noexcept {
    if (descriptor_ < 0) {
        descriptor_ = openPrivate(file_.c_str(), O_RDWR | O_CREAT);
    }
    Record const record = recordOf(testimony);
    return descriptor_ >= 0 &&
           pwrite(descriptor_, &record, sizeof record, 0) == static_cast<ssize_t>(sizeof record);
}

void requireNothingLost(std::string const& logFile, LogWitness const& witness) {
    std::string const ahead = logFile + "-wal";
    // In this order: a log that another process is writing is never behind its witness.
    std::optional<LogWitness::Testimony> const stored = witness.read();
    FoundFile const log = fileAt(logFile);
    AheadScan const scan = scanOf(ahead);
    if (!stored) {
        if (scan.isDamaged()) {
            failAsDamaged(ahead, scan, witness);
        }
        return;
    }
    if (!log.isThere || log.size == 0) {
        if (stored->lastId > 0) {
            fail(logFile, std::string(log.isThere ? "is empty" : "is missing") +
                              ", with messages up to id " + std::to_string(stored->lastId) +
                              " that were stored in it" + remedy(witness));
        }
        return;
    }
    AheadFile::Place const needed = stored->ahead;
    if (needed.end > 0 && (scan.salts != needed.salts || scan.committedEnd < needed.end)) {
        failAsLost(ahead, scan, needed, witness);
    }
}

void requireNothingLost(std::string const& logFile, LogWitness const& witness,
                        std::int64_t identity, std::int64_t lastId) {
    std::optional<LogWitness::Testimony> const stored = witness.read();
    if (stored && stored->identity == identity && lastId < stored->lastId) {
        fail(logFile, "ends with id " + std::to_string(lastId) + ", and messages up to id " +
                          std::to_string(stored->lastId) + " were stored in it" + remedy(witness));
    }
}

} // namespace zan::server
