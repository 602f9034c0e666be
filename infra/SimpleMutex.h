/// `SimpleMutex`: a recursive mutex that is used only after it was initialised.
///
/// It is recursive because an adapter may report an event from inside a forwarded call; a listener
/// that calls back on the same thread must find the door open, not a deadlock.
///
/// Threads: as told by `IMutex`.
#ifndef ZANENGINE_INFRA_SIMPLEMUTEX_H
#define ZANENGINE_INFRA_SIMPLEMUTEX_H

#include "infra/IMutex.h"

#include <mutex>

class ZAN_API SimpleMutex : public IMutex {
public:
    /// A mutex that is not initialised: `lock` and `unlock` refuse until `initialize` was called.
    SimpleMutex();

    SimpleMutex(SimpleMutex const&) = delete;
    SimpleMutex& operator=(SimpleMutex const&) = delete;

    /// Must not run while a thread holds the mutex. `uninitialize` belongs before it.
    ~SimpleMutex() override;

    /// Always true; doing it again changes nothing.
    bool initialize() override;

    /// Always true; doing it again changes nothing. `initialize` may follow.
    bool uninitialize() override;

    /// Waits for other threads; the thread that holds the mutex gets it once more at once. False,
    /// with nothing locked, when the mutex is not initialised.
    bool lock() ZAN_ACQUIRE() override;

    /// Takes back one `lock` of the calling thread; other threads get in after the last one. False,
    /// with nothing changed, when the mutex is not initialised.
    bool unlock() ZAN_RELEASE() override;

    bool isInitialised() override;

private:
    std::recursive_mutex mutex_;
    bool initialised_ = false;
};

#endif
