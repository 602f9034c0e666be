#include "engine/NullMutex.h"

NullMutex::NullMutex() = default;

NullMutex::~NullMutex() = default;

bool NullMutex::initialize() {
    return true;
}

bool NullMutex::uninitialize() {
    return true;
}

bool NullMutex::lock() ZAN_NO_THREAD_SAFETY_ANALYSIS {
    return true;
}

bool NullMutex::unlock() ZAN_NO_THREAD_SAFETY_ANALYSIS {
    return true;
}

bool NullMutex::isInitialised() {
    return true;
}
