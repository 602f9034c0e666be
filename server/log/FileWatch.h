/// Whether a file that is open still lies under its name.
///
/// Threads: one at a time.
#ifndef ZANENGINE_SERVER_LOG_FILEWATCH_H
#define ZANENGINE_SERVER_LOG_FILEWATCH_H

#include <cstdint>
#include <string>

#include <sys/types.h>

namespace zan::server {

/// What lies under a name at one moment.
struct FoundFile {
    bool isThere = false;
    dev_t device = 0;
    ino_t number = 0;
    std::int64_t size = 0;
};

FoundFile fileAt(std::string const& path);

/// Watches a file that never becomes smaller.
class FileWatch {
public:
    enum class State { InPlace, Missing, Replaced, Cut };

    /// The file that lies there now is the one that is watched.
    explicit FileWatch(std::string path);

    State look();
    std::string const& path() const { return path_; }

    /// The largest size that was seen.
    std::int64_t size() const { return file_.size; }

private:
    std::string const path_;
    FoundFile file_;
};

} // namespace zan::server

#endif
