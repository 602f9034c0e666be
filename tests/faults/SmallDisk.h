/// A small disk in memory, which only this process and its children see.
#ifndef ZANENGINE_TESTS_FAULTS_SMALLDISK_H
#define ZANENGINE_TESTS_FAULTS_SMALLDISK_H

#include <filesystem>
#include <stdexcept>
#include <string>

#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

/// Mounted on a folder as long as this object lives. Threads that were started before do not see
/// it.
class SmallDisk {
public:
    SmallDisk(std::string folder, int megabytes) : folder_(std::move(folder)) {
        std::filesystem::create_directories(folder_);
        std::string const size = "size=" + std::to_string(megabytes) + "m";
        isMounted_ = unshare(CLONE_NEWNS) == 0 &&
                     mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
                     mount("tmpfs", folder_.c_str(), "tmpfs", 0, size.c_str()) == 0;
    }
    SmallDisk(SmallDisk const&) = delete;
    SmallDisk& operator=(SmallDisk const&) = delete;
    ~SmallDisk() {
        if (isMounted_) {
            umount2(folder_.c_str(), MNT_DETACH);
        }
    }

    /// False where this process may not mount anything.
    bool isMounted() const { return isMounted_; }

    /// Not a byte is free after it.
    void fill() const {
        int const file = open(filler().c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
        if (file < 0) {
            throw std::runtime_error("cannot write " + filler());
        }
        std::string const block(4096, 'x');
        while (write(file, block.data(), block.size()) > 0) {
        }
        close(file);
    }

    void makeRoom() const { std::filesystem::remove(filler()); }

    void setReadOnly(bool on) const {
        unsigned long const flags = on ? MS_REMOUNT | MS_RDONLY : MS_REMOUNT;
        if (mount("tmpfs", folder_.c_str(), "tmpfs", flags, nullptr) != 0) {
            throw std::runtime_error("cannot remount " + folder_);
        }
    }

private:
    std::string filler() const { return folder_ + "/filler"; }

    std::string const folder_;
    bool isMounted_ = false;
};

#endif
