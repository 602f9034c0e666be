#include "infra/SimpleMutex.h"

SimpleMutex::SimpleMutex() = default;

SimpleMutex::~SimpleMutex() = default;

bool SimpleMutex::initialize() {
    initialised_ = true;
    return true;
}

bool SimpleMutex::uninitialize() {
    initialised_ = false;
    return true;
}

// The analysis knows no mutex that may refuse, so the two bodies below are hidden from it.
bool SimpleMutex::lock() ZAN_NO_THREAD_SAFETY_ANALYSIS {
    if (!initialised_) {
        return false;
    }
    mutex_.lock();
    return true;
}

bool SimpleMutex::unlock() ZAN_NO_THREAD_SAFETY_ANALYSIS {
    if (!initialised_) {
        return false;
    }
    mutex_.unlock();
    return true;
}

bool SimpleMutex::isInitialised() {
    return initialised_;
}
