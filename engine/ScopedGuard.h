/// `ScopedGuard`: holds a mutex for the length of a scope.
///
/// Threads: a guard belongs to the thread that made it.
#ifndef ZANENGINE_ENGINE_SCOPEDGUARD_H
#define ZANENGINE_ENGINE_SCOPEDGUARD_H

#include "infra/Export.h"
#include "infra/IMutex.h"

/// Locks on entry and unlocks on leaving, also when an exception passes. With a null pointer it
/// says so loudly on standard output, on entry and on leaving, and the scope runs without a lock.
class ZAN_API ZAN_SCOPED_CAPABILITY ScopedGuard {
public:
    explicit ScopedGuard(IMutex* mutex) ZAN_ACQUIRE(mutex);
    ~ScopedGuard() ZAN_RELEASE();
    ScopedGuard(ScopedGuard const&) = delete;
    ScopedGuard& operator=(ScopedGuard const&) = delete;

private:
    IMutex* mutex_;
};

#endif
