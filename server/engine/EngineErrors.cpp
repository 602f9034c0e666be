#include "server/engine/EngineErrors.h"

#include "errors/ZANUtilityFunctions.h"

#include <algorithm>
#include <iostream>
#include <mutex>

namespace zan::server {

void failAs(std::string const& type, std::string const& text) {
    // The registry counts its references plainly: even a lookup is for one thread at a time.
    static std::mutex registry;
    std::lock_guard const lock(registry);
    ZANUtilityFunctions::throwConcreteRemoteException(type, text);
}

std::string onOneLine(std::string text) {
    std::ranges::replace_if(
        text, [](char c) { return static_cast<unsigned char>(c) < ' '; }, ' ');
    return text;
}

void report(std::string const& connection, std::string const& text) {
    std::cout << onOneLine("Connection " + connection + ": " + text) + '\n' << std::flush;
}

void reportNoMemory() noexcept {
    try {
        std::cout << "A connection failed, and there is no memory to tell more\n" << std::flush;
    } catch (...) {
        // The application's own stream throws.
    }
}

} // namespace zan::server
