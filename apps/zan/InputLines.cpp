#include "apps/zan/InputLines.h"

#include "apps/zan/ExitCodes.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace zan::cli {

namespace {

[[noreturn]] void fail(std::string const& file) {
    throw std::system_error(errno, std::generic_category(), file + " cannot be read");
}

} // namespace

InputLines::InputLines(std::string const& file, Interrupt const& interrupt)
    : file_(file == "-" ? "the standard input" : file), interrupt_(interrupt),
      descriptor_(file == "-" ? dup(STDIN_FILENO) : open(file.c_str(), O_RDONLY | O_CLOEXEC)) {
    if (descriptor_ < 0) {
        fail(file_);
    }
}

InputLines::~InputLines() {
    close(descriptor_);
}

bool InputLines::next(std::string& line) {
    std::size_t end = waiting_.find('\n', at_);
    while (end == std::string::npos && fill()) {
        end = waiting_.find('\n', at_);
    }
    if (at_ == waiting_.size()) {
        return false;
    }
    ++number_;
    end = std::min(end, waiting_.size());
    line = waiting_.substr(at_, end - at_);
    at_ = std::min(end + 1, waiting_.size());
    if (line.ends_with('\r')) {
        line.pop_back();
    }
    return true;
}

bool InputLines::fill() {
    if (isAtEnd_) {
        return false;
    }
    std::array<pollfd, 2> waited{{{descriptor_, POLLIN, 0}, {interrupt_.descriptor(), POLLIN, 0}}};
    if (poll(waited.data(), waited.size(), -1) < 0) {
        fail(file_);
    }
    interrupt_.check();
    std::array<char, 65536> bytes{};
    ssize_t const size = read(descriptor_, bytes.data(), bytes.size());
    if (size < 0) {
        fail(file_);
    }
    waiting_.erase(0, std::exchange(at_, 0));
    waiting_.append(bytes.data(), static_cast<std::size_t>(size));
    isAtEnd_ = size == 0;
    return !isAtEnd_;
}

} // namespace zan::cli
