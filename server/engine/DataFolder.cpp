#include "server/engine/DataFolder.h"

#include "infra/WrongConfigurationException.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>
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

} // namespace

DataFolder::DataFolder(std::string path) : path_(std::move(path)) {
    std::error_code error;
    std::filesystem::create_directories(path_, error);
    if (error) {
        refuse(path_, "cannot be made (" + error.message() + ")");
    }
    lockFile_ = open((path_ + "/lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
    if (lockFile_ < 0) {
        refuse(path_, std::string("cannot be written (") + std::strerror(errno) + ")");
    }
    if (flock(lockFile_, LOCK_EX | LOCK_NB) != 0) {
        std::string const holder = holderOf(lockFile_);
        close(lockFile_);
        refuse(path_, "is in use by " + holder + "; one engine owns a data folder at a time");
    }
    std::string const holder = thisProcess();
    if (ftruncate(lockFile_, 0) != 0 ||
        pwrite(lockFile_, holder.data(), holder.size(), 0) != static_cast<ssize_t>(holder.size())) {
        std::string const reason = std::strerror(errno);
        close(lockFile_);
        refuse(path_, "cannot be written (" + reason + ")");
    }
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
