#include "server/log/FrameWrites.h"

#include "server/log/AheadFile.h"
#include "server/log/MessageLog.h"
#include "server/log/PrivateFile.h"

#include <sqlite3.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <new>
#include <string>
#include <utility>

#include <fcntl.h>
#include <unistd.h>

namespace zan::server {

namespace {

constexpr char const* ownName = "zan-log";
constexpr char const* plainName = "unix-excl";
constexpr int largestPage = 4096;
constexpr int sectorSize = 4096;

sqlite3_vfs* plainFileSystem() {
    static sqlite3_vfs* const found = sqlite3_vfs_find(plainName);
    return found;
}

/// The write-ahead log of one connection. It holds the header of a frame back until the page comes,
/// which SQLite writes right after it. Only a header that is appended is held: SQLite also writes
/// headers anew, without their pages.
class AheadLog {
public:
    /// Lies at the beginning of the memory that SQLite has for it.
    explicit AheadLog(std::shared_ptr<AheadFile> file) : file_(std::move(file)) {
        base_.pMethods = &methods;
    }

    static AheadLog& of(sqlite3_file* file) { return *reinterpret_cast<AheadLog*>(file); }
    static bool is(sqlite3_file const* file) { return file && file->pMethods == &methods; }

    std::shared_ptr<AheadFile> const& file() const { return file_; }

    bool write(void const* bytes, int count, sqlite3_int64 offset) {
        if (isHolding_ && offset == next_ + frameHeadSize && count <= largestPage) {
            std::memcpy(frame_ + frameHeadSize, bytes, static_cast<std::size_t>(count));
            isHolding_ = false;
            return writeNow(frame_, frameHeadSize + count, next_);
        }
        if (!letGo()) {
            return false;
        }
        if (count == frameHeadSize && offset == next_) {
            std::memcpy(frame_, bytes, frameHeadSize);
            isHolding_ = true;
            return true;
        }
        return writeNow(bytes, count, offset);
    }

    /// Writes a header whose page has not come.
    bool letGo() {
        return !std::exchange(isHolding_, false) || writeNow(frame_, frameHeadSize, next_);
    }

private:
    static sqlite3_io_methods const methods;

    bool writeNow(void const* bytes, int count, sqlite3_int64 offset) {
        bool const isWritten = file_->write(bytes, static_cast<std::size_t>(count), offset);
        next_ = isWritten ? offset + count : nowhere;
        return isWritten;
    }

    static constexpr sqlite3_int64 nowhere = -1;

    sqlite3_file base_ = {};
    std::shared_ptr<AheadFile> file_;
    sqlite3_int64 next_ = nowhere; ///< behind what was written last
    bool isHolding_ = false;
    unsigned char frame_[frameHeadSize + largestPage];
};

int failureOfWriting(int otherwise) {
    return errno == ENOSPC ? SQLITE_FULL : otherwise;
}

// Whatever else is asked goes to the file, when it has everything.
AheadFile* complete(sqlite3_file* file) {
    AheadLog& log = AheadLog::of(file);
    return log.letGo() ? log.file().get() : nullptr;
}

int closeLog(sqlite3_file* file) {
    complete(file);
    AheadLog::of(file).~AheadLog();
    return SQLITE_OK;
}

int readLog(sqlite3_file* file, void* bytes, int count, sqlite3_int64 offset) {
    AheadFile const* const ahead = complete(file);
    auto const wanted = static_cast<std::size_t>(count);
    ssize_t const read = ahead ? ahead->read(bytes, wanted, offset) : -1;
    if (read < 0) {
        return SQLITE_IOERR_READ;
    }
    auto const got = static_cast<std::size_t>(read);
    std::memset(static_cast<char*>(bytes) + got, 0, wanted - got);
    return got == wanted ? SQLITE_OK : SQLITE_IOERR_SHORT_READ;
}

int writeLog(sqlite3_file* file, void const* bytes, int count, sqlite3_int64 offset) {
    bool const isWritten = AheadLog::of(file).write(bytes, count, offset);
    return isWritten ? SQLITE_OK : failureOfWriting(SQLITE_IOERR_WRITE);
}

int truncateLog(sqlite3_file* file, sqlite3_int64 size) {
    AheadFile* const ahead = complete(file);
    return ahead && ahead->truncate(size) ? SQLITE_OK : SQLITE_IOERR_TRUNCATE;
}

int syncLog(sqlite3_file* file, int) {
    AheadFile* const ahead = complete(file);
    return ahead && ahead->sync() ? SQLITE_OK : failureOfWriting(SQLITE_IOERR_FSYNC);
}

int sizeOfLog(sqlite3_file* file, sqlite3_int64* size) {
    AheadFile const* const ahead = complete(file);
    *size = ahead ? ahead->size() : -1;
    return *size >= 0 ? SQLITE_OK : SQLITE_IOERR_FSTAT;
}

// The locks are those of the database itself.
int changeLockOfLog(sqlite3_file*, int) {
    return SQLITE_OK;
}

int isLogReserved(sqlite3_file*, int* answer) {
    *answer = 0;
    return SQLITE_OK;
}

int controlLog(sqlite3_file*, int, void*) {
    return SQLITE_NOTFOUND;
}

int sectorSizeOfLog(sqlite3_file*) {
    return sectorSize;
}

int traitsOfLog(sqlite3_file*) {
    return SQLITE_IOCAP_POWERSAFE_OVERWRITE;
}

// A write-ahead log is neither shared memory nor mapped: the first version of the table is enough.
sqlite3_io_methods const AheadLog::methods = {
    1,          closeLog,        readLog,         writeLog,        truncateLog,
    syncLog,    sizeOfLog,       changeLockOfLog, changeLockOfLog, isLogReserved,
    controlLog, sectorSizeOfLog, traitsOfLog,     nullptr,         nullptr,
    nullptr,    nullptr,         nullptr,         nullptr};

// SQLite itself would make files with the rights of the process's mask.
int openOther(char const* name, sqlite3_file* file, int flags, int* actual) {
    if (name && (flags & (SQLITE_OPEN_CREATE | SQLITE_OPEN_EXCLUSIVE)) == SQLITE_OPEN_CREATE) {
        int const made = access(name, F_OK) == 0 ? -1 : openPrivate(name, O_RDWR | O_CREAT);
        if (made >= 0) {
            close(made);
        }
    }
    sqlite3_vfs* const plain = plainFileSystem();
    return plain->xOpen(plain, name, file, flags, actual);
}

int openFile(sqlite3_vfs*, char const* name, sqlite3_file* file, int flags, int* actual) {
    if ((flags & SQLITE_OPEN_WAL) == 0) {
        return openOther(name, file, flags, actual);
    }
    file->pMethods = nullptr; // SQLite closes what has any
    try {
        std::shared_ptr<AheadFile> ahead = AheadFile::open(name);
        if (!ahead) {
            return SQLITE_CANTOPEN;
        }
        ::new (file) AheadLog(std::move(ahead));
    } catch (std::bad_alloc const&) {
        return SQLITE_NOMEM;
    }
    if (actual) {
        *actual = flags;
    }
    return SQLITE_OK;
}

// A copy of the plain file system under a name of its own: it opens files, the plain one does the
// rest.
sqlite3_vfs makeFileSystem(sqlite3_vfs const& plain) {
    sqlite3_vfs own = plain;
    own.zName = ownName;
    own.pNext = nullptr;
    own.szOsFile = std::max(static_cast<int>(sizeof(AheadLog)), plain.szOsFile);
    own.xOpen = openFile;
    return own;
}

} // namespace

char const* logFileSystem() {
    static bool const isRegistered = [] {
        sqlite3_initialize();
        if (!plainFileSystem()) {
            throw LogFailure(std::string("SQLite has no file system \"") + plainName + '"');
        }
        static sqlite3_vfs own = makeFileSystem(*plainFileSystem());
        return sqlite3_vfs_register(&own, 0) == SQLITE_OK;
    }();
    return isRegistered ? ownName : plainName;
}

std::shared_ptr<AheadFile> aheadFileOf(sqlite3* database) {
    sqlite3_file* file = nullptr;
    sqlite3_file_control(database, "main", SQLITE_FCNTL_JOURNAL_POINTER, &file);
    return AheadLog::is(file) ? AheadLog::of(file).file() : nullptr;
}

} // namespace zan::server
