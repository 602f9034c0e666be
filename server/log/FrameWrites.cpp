#include "server/log/FrameWrites.h"

#include "server/log/MessageLog.h"

#include <sqlite3.h>

#include <cstring>
#include <new>
#include <string>

namespace zan::server {

namespace {

constexpr char const* ownName = "zan-log";
constexpr char const* plainName = "unix-excl";
constexpr int headerSize = 24;
constexpr int largestPage = 4096;

sqlite3_vfs* plainFileSystem() {
    static sqlite3_vfs* const found = sqlite3_vfs_find(plainName);
    return found;
}

/// A write-ahead log. It holds the header of a frame back until the page comes, which SQLite writes
/// right after it. Only a header that is appended is held: SQLite also writes headers anew, without
/// their pages.
class AheadLog {
public:
    /// Lies at the beginning of the memory that SQLite has for it, the plain file behind it.
    AheadLog() { base_.pMethods = &methods; }

    static AheadLog& of(sqlite3_file* file) { return *reinterpret_cast<AheadLog*>(file); }

    sqlite3_file* plain() { return reinterpret_cast<sqlite3_file*>(this + 1); }

    int write(void const* bytes, int count, sqlite3_int64 offset) {
        if (isHolding_ && offset == next_ + headerSize && count <= largestPage) {
            std::memcpy(frame_ + headerSize, bytes, static_cast<std::size_t>(count));
            isHolding_ = false;
            return writeNow(frame_, headerSize + count, next_);
        }
        if (int const code = letGo(); code != SQLITE_OK) {
            return code;
        }
        if (count == headerSize && offset == next_) {
            std::memcpy(frame_, bytes, headerSize);
            isHolding_ = true;
            return SQLITE_OK;
        }
        return writeNow(bytes, count, offset);
    }

    /// Writes a header whose page has not come.
    int letGo() {
        if (!isHolding_) {
            return SQLITE_OK;
        }
        isHolding_ = false;
        return writeNow(frame_, headerSize, next_);
    }

private:
    static sqlite3_io_methods const methods;

    int writeNow(void const* bytes, int count, sqlite3_int64 offset) {
        int const code = plain()->pMethods->xWrite(plain(), bytes, count, offset);
        next_ = code == SQLITE_OK ? offset + count : nowhere;
        return code;
    }

    static constexpr sqlite3_int64 nowhere = -1;

    sqlite3_file base_ = {};
    sqlite3_int64 next_ = nowhere; ///< behind what was written last
    bool isHolding_ = false;
    unsigned char frame_[headerSize + largestPage];
};

static_assert(sizeof(AheadLog) % alignof(sqlite3_int64) == 0, "the plain file lies behind it");

// Whatever else is asked goes to the plain file, when it has everything.
template <class Call>
int complete(sqlite3_file* file, Call call) {
    AheadLog& log = AheadLog::of(file);
    int const code = log.letGo();
    return code == SQLITE_OK ? call(log.plain()) : code;
}

int closeLog(sqlite3_file* file) {
    AheadLog& log = AheadLog::of(file);
    log.letGo();
    return log.plain()->pMethods->xClose(log.plain());
}

int readLog(sqlite3_file* file, void* bytes, int count, sqlite3_int64 offset) {
    return complete(file, [=](sqlite3_file* plain) {
        return plain->pMethods->xRead(plain, bytes, count, offset);
    });
}

int writeLog(sqlite3_file* file, void const* bytes, int count, sqlite3_int64 offset) {
    return AheadLog::of(file).write(bytes, count, offset);
}

int truncateLog(sqlite3_file* file, sqlite3_int64 size) {
    return complete(file,
                    [=](sqlite3_file* plain) { return plain->pMethods->xTruncate(plain, size); });
}

int syncLog(sqlite3_file* file, int flags) {
    return complete(file,
                    [=](sqlite3_file* plain) { return plain->pMethods->xSync(plain, flags); });
}

int sizeOfLog(sqlite3_file* file, sqlite3_int64* size) {
    return complete(file,
                    [=](sqlite3_file* plain) { return plain->pMethods->xFileSize(plain, size); });
}

int lockLog(sqlite3_file* file, int level) {
    return complete(file,
                    [=](sqlite3_file* plain) { return plain->pMethods->xLock(plain, level); });
}

int unlockLog(sqlite3_file* file, int level) {
    return complete(file,
                    [=](sqlite3_file* plain) { return plain->pMethods->xUnlock(plain, level); });
}

int isLogReserved(sqlite3_file* file, int* answer) {
    return complete(file, [=](sqlite3_file* plain) {
        return plain->pMethods->xCheckReservedLock(plain, answer);
    });
}

int controlLog(sqlite3_file* file, int operation, void* argument) {
    return complete(file, [=](sqlite3_file* plain) {
        return plain->pMethods->xFileControl(plain, operation, argument);
    });
}

int sectorSizeOfLog(sqlite3_file* file) {
    sqlite3_file* const plain = AheadLog::of(file).plain();
    return plain->pMethods->xSectorSize(plain);
}

int traitsOfLog(sqlite3_file* file) {
    sqlite3_file* const plain = AheadLog::of(file).plain();
    return plain->pMethods->xDeviceCharacteristics(plain);
}

// A write-ahead log is neither shared memory nor mapped: the first version of the table is enough.
sqlite3_io_methods const AheadLog::methods = {
    1,       closeLog,  readLog,       writeLog,   truncateLog,     syncLog,     sizeOfLog,
    lockLog, unlockLog, isLogReserved, controlLog, sectorSizeOfLog, traitsOfLog, nullptr,
    nullptr, nullptr,   nullptr,       nullptr,    nullptr};

int openFile(sqlite3_vfs*, char const* name, sqlite3_file* file, int flags, int* actual) {
    sqlite3_vfs* const plain = plainFileSystem();
    if ((flags & SQLITE_OPEN_WAL) == 0) {
        return plain->xOpen(plain, name, file, flags, actual);
    }
    auto* const log = ::new (file) AheadLog;
    int const code = plain->xOpen(plain, name, log->plain(), flags, actual);
    if (code != SQLITE_OK) {
        file->pMethods = nullptr; // SQLite closes what has any
    }
    return code;
}

// A copy of the plain file system under a name of its own: it opens files, the plain one does the
// rest.
sqlite3_vfs makeFileSystem(sqlite3_vfs const& plain) {
    sqlite3_vfs own = plain;
    own.zName = ownName;
    own.pNext = nullptr;
    own.szOsFile = static_cast<int>(sizeof(AheadLog)) + plain.szOsFile;
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

} // namespace zan::server
