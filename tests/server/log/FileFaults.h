/// Lets the calls fail with which this process writes files, ours and SQLite's alike.
///
/// The functions of the C library that change files (`pwrite`, `fdatasync`, `fsync`, `ftruncate`,
/// `unlink`, `open` where it may make a file) are replaced in the whole test program. They do what
/// they always do, but for files under a folder while a plan for it stands; the disk is never
/// waited for.
///
/// Threads: the plan is one for the process; it is set and ended while nobody writes.
#ifndef ZANENGINE_TESTS_SERVER_LOG_FILEFAULTS_H
#define ZANENGINE_TESTS_SERVER_LOG_FILEFAULTS_H

#include <cerrno>
#include <ostream>
#include <string>

namespace filefaults {

enum class Fault {
    Error,  ///< the call fails with `error` and does nothing
    Late,   ///< the call does all of its work, and fails with `error` nevertheless
    Short,  ///< a write writes half; other calls fail with `error`
    Killed, ///< the process ends before the call
    Torn    ///< a write writes half, and the process ends
};

struct Plan {
    /// Which call it hits, counted from 1.
    int at = 0;
    Fault fault = Fault::Error;
    int error = EIO;
    /// All calls after it as well.
    bool stays = false;
    /// Only calls that wait for the disk count, and no others.
    bool syncsOnly = false;
};

inline void PrintTo(Plan const& plan, std::ostream* out) {
    *out << "call " << plan.at << ", fault " << static_cast<int>(plan.fault) << ", error "
         << plan.error << (plan.stays ? ", for good" : "");
}

/// Stands for the calls on files under this folder as long as the object lives.
class Planned {
public:
    Planned(std::string const& folder, Plan const& plan);
    ~Planned();
    Planned(Planned const&) = delete;
    Planned& operator=(Planned const&) = delete;

    /// Was there a call for it?
    bool wasHit() const;
};

} // namespace filefaults

#endif
