#include "server/log/PrivateFile.h"

#include "infra/WrongConfigurationException.h"

#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace zan::server {

namespace {

constexpr mode_t ownersOnly = S_IRUSR | S_IWUSR;
constexpr mode_t ofOthers = S_IRWXG | S_IRWXO;

char const* kindOf(mode_t mode) {
    switch (mode & S_IFMT) {
    case S_IFIFO:
        return "a named pipe";
    case S_IFDIR:
        return "a folder";
    case S_IFLNK:
        return "a symbolic link";
    case S_IFSOCK:
        return "a socket";
    default:
        return "a device";
    }
}

// A file that was made under a strict mask lacks rights of its owner.
bool isPrivate(mode_t mode) {
    return (mode & (ofOthers | ownersOnly)) == ownersOnly;
}

} // namespace

int openPrivate(char const* path, int flags) noexcept {
    int const file = open(path, flags | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC, ownersOnly);
    if (file < 0) {
        return -1;
    }
    struct stat found {};
    int reason = fstat(file, &found) == 0 ? 0 : errno;
    if (reason == 0 && !S_ISREG(found.st_mode)) {
        reason = EINVAL;
    }
    if (reason == 0 && !isPrivate(found.st_mode) && fchmod(file, ownersOnly) != 0) {
        reason = errno;
    }
    if (reason != 0) {
        close(file);
        errno = reason;
        return -1;
    }
    return file;
}

void makePrivate(std::string const& path) {
    struct stat found {};
    if (lstat(path.c_str(), &found) != 0) {
        return;
    }
    if (!S_ISREG(found.st_mode)) {
        throw WrongConfigurationException(path + ": is " + kindOf(found.st_mode) +
                                          ", where the engine keeps a file; a regular file, or "
                                          "nothing, would be right");
    }
    if ((found.st_mode & ofOthers) != 0 && chmod(path.c_str(), ownersOnly) != 0) {
        throw WrongConfigurationException(
            path + ": others have rights to it, which cannot be taken away (" +
            std::strerror(errno) + "); a file of the engine's own user would be right");
    }
}

} // namespace zan::server
