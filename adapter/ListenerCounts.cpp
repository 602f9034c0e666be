#include "adapter/ListenerCounts.h"

namespace zan {

// Never destroyed: listeners that are static objects go late.
std::mutex& listenerCounts() {
    static std::mutex& mutex = *new std::mutex;
    return mutex;
}

} // namespace zan
