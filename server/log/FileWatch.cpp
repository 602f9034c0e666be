#include "server/log/FileWatch.h"

#include <utility>

#include <sys/stat.h>

namespace zan::server {

FoundFile fileAt(std::string const& path) {
    struct stat found {};
    if (stat(path.c_str(), &found) != 0) {
        return {};
    }
    return {true, found.st_dev, found.st_ino, static_cast<std::int64_t>(found.st_size)};
}

FileWatch::FileWatch(std::string path) : path_(std::move(path)), file_(fileAt(path_)) {}

FileWatch::State FileWatch::look() {
    FoundFile const now = fileAt(path_);
    if (!now.isThere) {
        return State::Missing;
    }
    if (now.device != file_.device || now.number != file_.number) {
        return State::Replaced;
    }
    if (now.size < file_.size) {
        return State::Cut;
    }
    file_.size = now.size;
    return State::InPlace;
}

} // namespace zan::server
