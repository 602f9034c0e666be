#include "server/log/AheadFile.h"

#include "server/log/PrivateFile.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <map>
#include <mutex>
#include <system_error>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace zan::server {

namespace {

constexpr std::size_t largestPiece = 1024 * 1024;

struct OpenFiles {
    std::mutex mutex;
    std::map<std::string, std::weak_ptr<AheadFile>> byPath;
};

// Never destroyed: threads of an engine may outlive the end of `main`.
OpenFiles& openFiles() {
    static auto* const files = new OpenFiles;
    return *files;
}

// The name of a new file has to survive a power failure as well.
bool syncFolderOf(std::string const& path) {
    std::string const folder = std::filesystem::path(path).parent_path().string();
    int const handle =
        open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (handle < 0) {
        return false;
    }
    bool const isSynced = fsync(handle) == 0;
    close(handle);
    return isSynced;
}

std::uint32_t bigEndianAt(unsigned char const* bytes) {
    return std::uint32_t{bytes[0]} << 24 | std::uint32_t{bytes[1]} << 16 |
           std::uint32_t{bytes[2]} << 8 | bytes[3];
}

bool writeAll(int file, void const* bytes, std::size_t count, std::int64_t offset) {
    auto const* at = static_cast<char const*>(bytes);
    while (count > 0) {
        ssize_t const now = pwrite(file, at, count, static_cast<off_t>(offset));
        if (now < 0 && errno == EINTR) {
            continue;
        }
        if (now <= 0) {
            errno = now == 0 ? ENOSPC : errno;
            return false;
        }
        at += now;
        offset += now;
        count -= static_cast<std::size_t>(now);
    }
    return true;
}

} // namespace

std::shared_ptr<AheadFile> AheadFile::open(std::string const& path) {
    OpenFiles& files = openFiles();
    std::lock_guard const lock(files.mutex);
    std::erase_if(files.byPath, [](auto const& each) { return each.second.expired(); });
    if (auto const known = files.byPath.find(path); known != files.byPath.end()) {
        return known->second.lock();
    }
    bool const isNew = access(path.c_str(), F_OK) != 0;
    int const file = openPrivate(path.c_str(), O_RDWR | O_CREAT);
    if (file < 0) {
        return nullptr;
    }
    std::shared_ptr<AheadFile> opened(new AheadFile(path, file));
    if (isNew && !syncFolderOf(path)) {
        return nullptr;
    }
    files.byPath[path] = opened;
    return opened;
}

AheadFile::~AheadFile() {
    close(file_);
}

ssize_t AheadFile::read(void* bytes, std::size_t count, std::int64_t offset) const {
    std::size_t done = 0;
    while (done < count) {
        ssize_t const now = pread(file_, static_cast<char*>(bytes) + done, count - done,
                                  static_cast<off_t>(offset + static_cast<std::int64_t>(done)));
        if (now < 0 && errno == EINTR) {
            continue;
        }
        if (now < 0) {
            return -1;
        }
        if (now == 0) {
            break;
        }
        done += static_cast<std::size_t>(now);
    }
    return static_cast<ssize_t>(done);
}

bool AheadFile::write(void const* bytes, std::size_t count, std::int64_t offset) {
    if (offset == 0) {
        if (mayRestart_ && !mayRestart_()) {
            errno = EIO;
            return false;
        }
        counts_ = 0;
        last_.offset = seen_.offset = -1;
    }
    isTouched_ = true;
    if (!writeAll(file_, bytes, count, offset)) {
        return false;
    }
    note(static_cast<unsigned char const*>(bytes), count, offset);
    return true;
}

// What was written, as far as this has to know.
void AheadFile::note(unsigned char const* bytes, std::size_t count, std::int64_t offset) {
    auto const end = offset + static_cast<std::int64_t>(count);
    if (offset == 0 && count >= aheadHeadSize) {
        pageSize_ = static_cast<int>(bigEndianAt(bytes + 8));
        salts_ = std::uint64_t{bigEndianAt(bytes + 16)} << 32 | bigEndianAt(bytes + 20);
        written_ = end;
        return;
    }
    written_ = std::max(written_, end);
    bool const isFrame = count >= frameHeadSize && pageSize_ > 0 &&
                         (offset - aheadHeadSize) % (frameHeadSize + pageSize_) == 0;
    if (isFrame) {
        newest_.offset = offset;
        std::memcpy(newest_.bytes.data(), bytes, frameHeadSize);
        hasCommit_ = hasCommit_ || bigEndianAt(bytes + 4) != 0;
    }
}

bool AheadFile::sync() {
    if (fdatasync(file_) != 0) {
        // The system may have dropped what it could not write, and tells so once only.
        isUnsettled_ = true;
        return false;
    }
    if (hasCommit_ && isSound_ && !isSound_()) {
        errno = EIO;
        return false;
    }
    return true;
}

bool AheadFile::truncate(std::int64_t size) {
    if (ftruncate(file_, static_cast<off_t>(size)) != 0) {
        return false;
    }
    if (size < counts_) {
        counts_ = size;
        last_.offset = seen_.offset = -1;
    }
    written_ = std::min(written_, size);
    return true;
}

std::int64_t AheadFile::size() const {
    struct stat found {};
    return fstat(file_, &found) == 0 ? static_cast<std::int64_t>(found.st_size) : -1;
}

void AheadFile::watchCommits(std::function<bool()> isSound) {
    isSound_ = std::move(isSound);
}

void AheadFile::watchRestarts(std::function<bool()> mayRestart) {
    mayRestart_ = std::move(mayRestart);
}

void AheadFile::start() {
    AheadScan const found = scanAhead(file_);
    pageSize_ = found.pageSize;
    salts_ = found.salts;
    counts_ = written_ = found.committedEnd;
    last_.offset = found.committedEnd > 0 ? found.lastFrame : -1;
    if (last_.offset >= 0) {
        read(last_.bytes.data(), last_.bytes.size(), last_.offset);
    }
    if (found.size > counts_ && !cutOff()) {
        throw std::system_error(errno, std::generic_category());
    }
}

void AheadFile::accept() {
    if (!isTouched_) {
        return;
    }
    isTouched_ = hasCommit_ = false;
    counts_ = written_;
    last_ = newest_;
}

bool AheadFile::undo() {
    if (isTouched_) {
        bool const mustLast = hasCommit_.exchange(false);
        isTouched_ = false;
        if (!cutOff() || (mustLast && fdatasync(file_) != 0)) {
            isUnsettled_ = true;
        }
    }
    return settle();
}

bool AheadFile::cutOff() {
    written_ = counts_;
    return ftruncate(file_, static_cast<off_t>(counts_)) == 0;
}

bool AheadFile::settle() {
    if (!isUnsettled_) {
        return true;
    }
    if (!cutOff() || !writeAgain() || fdatasync(file_) != 0) {
        return false;
    }
    isUnsettled_ = false;
    return true;
}

// What is written again is new to the system, which then tries again to get it onto the disk.
bool AheadFile::writeAgain() const {
    try {
        if (scanAhead(file_).committedEnd != counts_) {
            errno = EIO;
            return false;
        }
    } catch (std::system_error const& failure) {
        errno = failure.code().value();
        return false;
    }
    std::vector<char> piece(largestPiece);
    for (std::int64_t at = 0; at < counts_;) {
        auto const count = std::min(static_cast<std::int64_t>(piece.size()), counts_ - at);
        auto const bytes = static_cast<std::size_t>(count);
        if (read(piece.data(), bytes, at) != static_cast<ssize_t>(bytes) ||
            !writeAll(file_, piece.data(), bytes, at)) {
            return false;
        }
        at += count;
    }
    return true;
}

bool AheadFile::replace() {
    int const fresh = openPrivate(path_.c_str(), O_RDWR | O_CREAT | O_EXCL);
    if (fresh < 0) {
        return false;
    }
    bool const isReplaced = syncFolderOf(path_) && dup3(fresh, file_, O_CLOEXEC) >= 0;
    close(fresh);
    if (isReplaced) {
        counts_ = written_ = 0;
        last_.offset = seen_.offset = newest_.offset = -1;
        isTouched_ = hasCommit_ = false;
        isUnsettled_ = false;
    }
    return isReplaced;
}

bool AheadFile::isThere(FrameHead const& head) const {
    if (head.offset < 0) {
        return true;
    }
    std::array<unsigned char, frameHeadSize> now{};
    return read(now.data(), now.size(), head.offset) == static_cast<ssize_t>(now.size()) &&
           now == head.bytes;
}

// A file that was cut grows again with the next commit, but for the frames between.
bool AheadFile::isIntact() {
    bool const isSound = size() >= written_ && isThere(seen_) && isThere(last_);
    seen_ = last_;
    return isSound;
}

bool AheadFile::isSameFile(dev_t device, ino_t number) const {
    struct stat found {};
    return fstat(file_, &found) == 0 && found.st_dev == device && found.st_ino == number;
}

} // namespace zan::server
