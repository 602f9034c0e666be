#include "guaranteed/SharedAdapters.h"

#include <mutex>
#include <unordered_map>

namespace zan {

namespace {

struct Counts {
    std::mutex mutex;
    std::unordered_map<ZANGMLAdapter const*, std::size_t> listeners;
};

// Never destroyed: listeners that are static objects go late.
Counts& counts() {
    static Counts& all = *new Counts;
    return all;
}

} // namespace

void SharedAdapters::add(ZANGMLAdapter const* adapter) {
    if (adapter) {
        std::lock_guard const lock(counts().mutex);
        ++counts().listeners[adapter];
    }
}

void SharedAdapters::remove(ZANGMLAdapter const* adapter) noexcept {
    std::lock_guard const lock(counts().mutex);
    auto const found = counts().listeners.find(adapter);
    if (found != counts().listeners.end() && --found->second == 0) {
        counts().listeners.erase(found);
    }
}

std::size_t SharedAdapters::count(ZANGMLAdapter const* adapter) noexcept {
    std::lock_guard const lock(counts().mutex);
    auto const found = counts().listeners.find(adapter);
    return found == counts().listeners.end() ? 0 : found->second;
}

} // namespace zan
