/// A file that does nothing but take up space, so that there is some to give up on a full disk:
/// removing rows needs space too.
///
/// Threads: any.
#ifndef ZANENGINE_SERVER_LOG_SPACERESERVE_H
#define ZANENGINE_SERVER_LOG_SPACERESERVE_H

#include <mutex>
#include <string>

namespace zan::server {

class SpaceReserve {
public:
    /// Makes the file when it is missing. A failure waits for `renew`.
    explicit SpaceReserve(std::string file);

    /// Removes the file; false when there was none.
    bool giveUp();

    /// Makes the file again when there is room for it and more. A failure waits for the next time.
    void renew();

private:
    std::string const file_;
    std::mutex mutex_;
    bool isThere_ = false;
};

} // namespace zan::server

#endif
