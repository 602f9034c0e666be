#include "engine/ScopedGuard.h"

#include <iostream>

namespace {

// Loud but harmless, and meant so: a missing mutex is a fault of the library's own.
void tellMissingMutex() {
    std::cout << "\n\n\n\n\n!!!!!! Guard: &mutex = NULL!!!\n\n\n\n\n" << std::flush;
}

} // namespace

ScopedGuard::ScopedGuard(IMutex* mutex) ZAN_NO_THREAD_SAFETY_ANALYSIS : mutex_(mutex) {
    if (mutex_) {
        mutex_->lock();
    } else {
        tellMissingMutex();
    }
}

ScopedGuard::~ScopedGuard() ZAN_NO_THREAD_SAFETY_ANALYSIS {
    if (mutex_) {
        mutex_->unlock();
    } else {
        tellMissingMutex();
    }
}
