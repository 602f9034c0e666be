/// `NullMutex`: stands in for the adapter mutex when the adapter is safe for threads by itself.
///
/// Threads: any; nothing is locked.
#ifndef ZANENGINE_ENGINE_NULLMUTEX_H
#define ZANENGINE_ENGINE_NULLMUTEX_H

#include "infra/IMutex.h"

/// Every operation does nothing and returns true.
class ZAN_API NullMutex : public IMutex {
public:
    NullMutex();
    ~NullMutex() override;

    bool initialize() override;
    bool uninitialize() override;
    bool lock() ZAN_ACQUIRE() override;
    bool unlock() ZAN_RELEASE() override;
    bool isInitialised() override;
};

#endif
