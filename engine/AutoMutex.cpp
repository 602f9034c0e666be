#include "engine/AutoMutex.h"

AutoMutex::AutoMutex() {
    SimpleMutex::initialize();
}

AutoMutex::~AutoMutex() {
    SimpleMutex::uninitialize();
}
