#include "FileFaults.h"

#include <atomic>
#include <cstdarg>
#include <cstdio>

#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace filefaults {

namespace {

Plan plan;
std::string folder;
std::atomic<int> calls{0};
std::atomic<bool> isOn{false};

enum class Kind { Write, Sync, Other };

bool isInFolder(std::string const& path) {
    return path.compare(0, folder.size(), folder) == 0;
}

bool isInFolder(int file) {
    char target[4096];
    std::string const link = "/proc/self/fd/" + std::to_string(file);
    ssize_t const size = readlink(link.c_str(), target, sizeof target);
    return size > 0 && isInFolder(std::string(target, static_cast<std::size_t>(size)));
}

bool isHit(Kind kind) {
    if (plan.syncsOnly && kind != Kind::Sync) {
        return false;
    }
    int const call = ++calls;
    return call == plan.at || (plan.stays && call > plan.at);
}

// `half` does a part of the work, `all` the whole of it.
template <class Half, class All>
long injected(Half half, All all) {
    switch (plan.fault) {
    case Fault::Killed:
        _exit(0);
    case Fault::Torn:
        half();
        _exit(0);
    case Fault::Short:
        if (long const done = half(); done > 0) {
            return done;
        }
        break;
    case Fault::Late:
        all();
        break;
    case Fault::Error:
        break;
    }
    errno = plan.error;
    return -1;
}

template <class Target, class All>
long call(Kind kind, Target target, All all) {
    if (!isOn || !isInFolder(target) || !isHit(kind)) {
        return all();
    }
    return injected([] { return 0L; }, all);
}

ssize_t write(int file, void const* bytes, std::size_t count, off_t offset) {
    auto const some = [=](std::size_t part) {
        return syscall(SYS_pwrite64, file, bytes, part, offset);
    };
    if (!isOn || !isInFolder(file) || !isHit(Kind::Write)) {
        return some(count);
    }
    return injected([&] { return some(count / 2); }, [&] { return some(count); });
}

// No test takes the power away, so nobody has to wait for the disk.
int sync(int file) {
    return static_cast<int>(call(Kind::Sync, file, [] { return 0L; }));
}

int openAny(char const* path, int flags, unsigned mode) {
    auto const all = [=] { return syscall(SYS_openat, AT_FDCWD, path, flags, mode); };
    return static_cast<int>((flags & O_CREAT) != 0 ? call(Kind::Other, std::string(path), all)
                                                   : all());
}

} // namespace

Planned::Planned(std::string const& where, Plan const& what) {
    folder = where;
    plan = what;
    calls = 0;
    isOn = true;
}

Planned::~Planned() {
    isOn = false;
}

bool Planned::wasHit() const {
    return calls >= plan.at;
}

} // namespace filefaults

extern "C" {

ssize_t pwrite(int file, void const* bytes, size_t count, off_t offset) {
    return filefaults::write(file, bytes, count, offset);
}

ssize_t pwrite64(int file, void const* bytes, size_t count, off64_t offset) {
    return filefaults::write(file, bytes, count, offset);
}

int fdatasync(int file) {
    return filefaults::sync(file);
}

int fsync(int file) {
    return static_cast<int>(
        filefaults::call(filefaults::Kind::Sync, file, [=] { return syscall(SYS_fsync, file); }));
}

int ftruncate(int file, off_t size) noexcept {
    return static_cast<int>(filefaults::call(filefaults::Kind::Other, file,
                                             [=] { return syscall(SYS_ftruncate, file, size); }));
}

int ftruncate64(int file, off64_t size) noexcept {
    return ftruncate(file, size);
}

int unlink(char const* path) noexcept {
    return static_cast<int>(filefaults::call(filefaults::Kind::Other, std::string(path),
                                             [=] { return syscall(SYS_unlink, path); }));
}

int open(char const* path, int flags, ...) {
    va_list more;
    va_start(more, flags);
    unsigned const mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(more, unsigned) : 0;
    va_end(more);
    return filefaults::openAny(path, flags, mode);
}

int open64(char const* path, int flags, ...) {
    va_list more;
    va_start(more, flags);
    unsigned const mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(more, unsigned) : 0;
    va_end(more);
    return filefaults::openAny(path, flags, mode);
}

} // extern "C"
