/// `AutoMutex`: a `SimpleMutex` that is ready for use from its construction to its end.
///
/// Threads: any thread may lock and unlock it while it lives.
#ifndef ZANENGINE_ENGINE_AUTOMUTEX_H
#define ZANENGINE_ENGINE_AUTOMUTEX_H

#include "infra/SimpleMutex.h"

/// Initialises itself in the constructor and uninitialises itself in the destructor.
class ZAN_API AutoMutex : public SimpleMutex {
public:
    AutoMutex();
    ~AutoMutex() override;
};

#endif
