/// `IMutex`: what the library asks of a mutex.
///
/// The facade locks through this interface, so that a lock which does nothing can stand in where an
/// adapter is safe for threads by itself.
///
/// Threads: `lock` and `unlock` may be called by any thread between `initialize` and
/// `uninitialize`; those two belong to the mutex's owner, while no other thread uses the mutex.
#ifndef ZANENGINE_INFRA_IMUTEX_H
#define ZANENGINE_INFRA_IMUTEX_H

#include "infra/Export.h"
#include "infra/ThreadAnnotations.h"

class ZAN_API ZAN_CAPABILITY("mutex") IMutex {
public:
    IMutex();

    /// A mutex has an identity: it is passed by pointer, never copied.
    IMutex(IMutex const&) = delete;
    IMutex& operator=(IMutex const&) = delete;

    /// Must not run while a thread holds the mutex.
    virtual ~IMutex();

    /// Makes the mutex ready for use; true when it is. To be called before the first `lock`.
    virtual bool initialize() = 0;

    /// Ends the use of the mutex; true when it is no longer in use. No thread may hold the mutex.
    virtual bool uninitialize() = 0;

    /// Waits until the calling thread holds the mutex; true when it does. False means that there is
    /// nothing to be given back: the caller goes on without a lock, or not at all. The
    /// thread-safety analysis takes the mutex for held in either case, so a caller may ignore the
    /// result.
    virtual bool lock() ZAN_ACQUIRE() = 0;

    /// Gives the mutex back; true when that was done. Only the thread that holds it may do so.
    virtual bool unlock() ZAN_RELEASE() = 0;

    /// True between a successful `initialize` and the next `uninitialize`.
    virtual bool isInitialised() = 0;
};

#endif
