/// Reads a write-ahead file the way SQLite does when it takes one up, and tells what SQLite would
/// pass over in silence.
///
/// Threads: a function without state.
#ifndef ZANENGINE_SERVER_LOG_AHEADSCAN_H
#define ZANENGINE_SERVER_LOG_AHEADSCAN_H

#include <cstdint>

namespace zan::server {

/// What lies in front of the first frame, and in front of the page of each frame.
inline constexpr int aheadHeadSize = 32;
inline constexpr int frameHeadSize = 24;

struct AheadScan {
    std::int64_t size = 0; ///< of the file
    bool hasHead = false;
    int pageSize = 0;
    /// Other ones each time that the file is used from its beginning again; the upper half counts
    /// these times.
    std::uint64_t salts = 0;
    /// Behind the last commit that SQLite finds; 0 without one.
    std::int64_t committedEnd = 0;
    /// Where a commit's frame begins that lies in front of `committedEnd`.
    std::int64_t lastFrame = 0;
    /// Counted from 1, the first frame that is not what was written; 0 when there is none but what
    /// a process leaves that is killed while it writes.
    long badFrame = 0;
    /// How many commits stand behind it, which SQLite would not find.
    long commitsBehind = 0;

    /// Is it anything but what a process leaves behind, however it ended?
    bool isDamaged() const { return badFrame > 0 || (!hasHead && size > aheadHeadSize); }
};

/// Throws std::system_error when the file cannot be read.
AheadScan scanAhead(int file);

} // namespace zan::server

#endif
