#include "server/engine/DataFolder.h"

#include "infra/WrongConfigurationException.h"
#include "server/log/PrivateFile.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace zan::server {

namespace {

[[noreturn]] void refuse(std::string const& path, std::string const& reason) {
    throw WrongConfigurationException("data folder " + path + ": " + reason);
}

std::string thisProcess() {
    std::array<char, 256> host{};
    gethostname(host.data(), host.size() - 1);
    return "process " + std::to_string(getpid()) + " on " + host.data();
}

std::string holderOf(int lockFile) {
    std::array<char, 512> text{};
    ssize_t const size = pread(lockFile, text.data(), text.size(), 0);
    return size > 0 ? std::string(text.data(), static_cast<std::size_t>(size))
                    : std::string("another process");
}

void makeFolder(std::string const& path) {
    std::error_code error;
    std::filesystem::path const folder(path);
    if (folder.has_parent_path()) {
        std::filesystem::create_directories(folder.parent_path(), error);
    }
    if (!error && mkdir(path.c_str(), S_IRWXU) == 0) {
        // The process's mask may have taken rights of the owner.
        if (chmod(path.c_str(), S_IRWXU) != 0) {
            refuse(path, std::string("cannot be made private (") + std::strerror(errno) + ")");
        }
    } else if (!error && errno != EEXIST) {
        error.assign(errno, std::generic_category());
    }
    if (!error && !std::filesystem::is_directory(folder, error) && !error) {
        refuse(path, "is no folder");
    }
    if (error) {
        refuse(path, "cannot be made (" + error.message() + ")");
    }
}

// What cannot be closed, or must not; the files in it are private all the same.
std::string closedToOthers(std::string const& path) {
    struct stat found {};
    if (stat(path.c_str(), &found) != 0 || (found.st_mode & (S_IRWXG | S_IRWXO)) == 0) {
        return {};
    }
    bool const isForAll = (found.st_mode & S_ISVTX) != 0;
    if (!isForAll && found.st_uid == geteuid() && chmod(path.c_str(), S_IRWXU) == 0) {
        return {};
    }
    return "others have rights to the data folder " + path +
           "; a folder of the engine's own user, with rights for nobody else, would be right";
}

} // namespace

DataFolder::DataFolder(std::string path) : path_(std::move(path)) {
    makeFolder(path_);
    warning_ = closedToOthers(path_);
    makePrivate(lockPath());
    takeLock();
}

// Of the new file, when there is one already.
void DataFolder::takeLock() {
    int const file = openPrivate(lockPath().c_str(), O_RDWR | O_CREAT);
    if (file < 0) {
        refuse(path_, std::string("cannot be written (") + std::strerror(errno) + ")");
    }
    if (flock(file, LOCK_EX | LOCK_NB) != 0) {
        std::string const holder = holderOf(file);
        close(file);
        refuse(path_, "is in use by " + holder + "; one engine owns a data folder at a time");
    }
    std::string const holder = thisProcess();
    if (ftruncate(file, 0) != 0 ||
        pwrite(file, holder.data(), holder.size(), 0) != static_cast<ssize_t>(holder.size())) {
        std::string const reason = std::strerror(errno);
        close(file);
        refuse(path_, "cannot be written (" + reason + ")");
    }
    if (lockFile_ >= 0) {
        close(lockFile_);
    }
    lockFile_ = file;
}

bool DataFolder::isLockInPlace() const {
    struct stat held {};
    struct stat found {};
    return fstat(lockFile_, &held) == 0 && stat(lockPath().c_str(), &found) == 0 &&
           held.st_dev == found.st_dev && held.st_ino == found.st_ino;
}

std::string DataFolder::watchLock() {
    if (isLockInPlace()) {
        news_.clear();
        return {};
    }
    std::string now = "the file lock was deleted or moved away while the engine runs; it was made "
                      "anew";
    try {
        takeLock();
    } catch (WrongConfigurationException const& e) {
        now = std::string("the file lock was deleted or moved away while the engine runs: ") +
              e.what();
    }
    return std::exchange(news_, now) == now ? std::string() : now;
}

// The lock goes with the descriptor. The file stays: a new engine may be waiting at its door.
DataFolder::~DataFolder() {
    close(lockFile_);
}

std::string DataFolder::makeTemporary() {
    std::string pattern = (std::filesystem::temp_directory_path() / "zan-engine-XXXXXX").string();
    if (!mkdtemp(pattern.data())) {
        refuse(pattern, std::string("cannot be made (") + std::strerror(errno) + ")");
    }
    return pattern;
}

} // namespace zan::server
