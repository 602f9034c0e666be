#include "server/log/SpaceReserve.h"

#include "server/log/PrivateFile.h"

#include <filesystem>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <unistd.h>

namespace zan::server {

namespace {

constexpr std::size_t reserved = 1024 * 1024;
// With less than this the reserve would take what the log itself needs.
constexpr std::size_t leastRoom = 4 * reserved;

} // namespace

SpaceReserve::SpaceReserve(std::string file) : file_(std::move(file)) {
    std::error_code ignored;
    isThere_ = std::filesystem::file_size(file_, ignored) == reserved;
    renew();
}

bool SpaceReserve::giveUp() {
    std::lock_guard const lock(mutex_);
    isThere_ = false;
    return unlink(file_.c_str()) == 0;
}

void SpaceReserve::renew() {
    std::lock_guard const lock(mutex_);
    std::error_code error;
    auto const folder = std::filesystem::absolute(file_, error).parent_path();
    if (isThere_ || std::filesystem::space(folder, error).available < leastRoom || error) {
        return;
    }
    int const descriptor = openPrivate(file_.c_str(), O_RDWR | O_CREAT);
    if (descriptor < 0) {
        return;
    }
    isThere_ = posix_fallocate(descriptor, 0, reserved) == 0;
    close(descriptor);
    if (!isThere_) {
        unlink(file_.c_str());
    }
}

} // namespace zan::server
