#include "server/engine/GuaranteedAdapters.h"

#include "server/engine/GuaranteedAdapter.h"

#include <map>
#include <utility>
#include <vector>

namespace zan::server {

namespace {

struct Entry {
    std::unique_ptr<GuaranteedAdapter> adapter;
    GuaranteedAdapters const* factory; // null when that is gone
    bool cameBack = false;
};

struct ProcessAdapters {
    std::mutex mutex;
    std::map<ZANGMLAdapter*, Entry> adapters;
    std::size_t returns = 0; // since those without a listener were looked for
};

using Ended = std::vector<std::unique_ptr<GuaranteedAdapter>>;

// Never destroyed: a listener that is a static object may be the last to go.
ProcessAdapters& ofProcess() {
    static ProcessAdapters& all = *new ProcessAdapters;
    return all;
}

// Takes out those that nobody can have any more. The lock is held by all that call this.
//
// An adapter that did not come back may be of a listener that is being made, which does not count
// yet; so it stays as long as its factory.
Ended takeUnused() {
    Ended unused;
    ofProcess().returns = 0;
    auto& adapters = ofProcess().adapters;
    for (auto each = adapters.begin(); each != adapters.end();) {
        auto& [address, entry] = *each;
        bool const mayEnd = entry.cameBack || !entry.factory;
        if (mayEnd && ZANGMLAdapterFactory::listenersOf(address) == 0) {
            unused.push_back(std::move(entry.adapter));
            each = adapters.erase(each);
        } else {
            ++each;
        }
    }
    return unused;
}

} // namespace

GuaranteedAdapters::~GuaranteedAdapters() {
    Ended unused; // goes after the lock
    std::lock_guard const lock(ofProcess().mutex);
    for (auto& [address, entry] : ofProcess().adapters) {
        if (entry.factory == this) {
            entry.factory = nullptr;
        }
    }
    unused = takeUnused();
}

void GuaranteedAdapters::serve(std::weak_ptr<Engine> engine, std::string name) {
    std::lock_guard const lock(mutex_);
    engine_ = std::move(engine);
    name_ = std::move(name);
}

ZANGMLAdapter* GuaranteedAdapters::newGMLAdapter(ZANGuaranteedEngineMessageListener*) {
    std::unique_ptr<GuaranteedAdapter> adapter;
    {
        std::lock_guard const lock(mutex_);
        adapter = std::make_unique<GuaranteedAdapter>(engine_, name_);
    }
    ZANGMLAdapter* const address = adapter.get();
    std::lock_guard const lock(ofProcess().mutex);
    ofProcess().adapters.emplace(address, Entry{std::move(adapter), this});
    return address;
}

void GuaranteedAdapters::deleteGMLAdapter(ZANGMLAdapter* adapter) {
    Ended unused; // goes after the lock
    std::lock_guard const lock(ofProcess().mutex);
    auto const found = ofProcess().adapters.find(adapter);
    if (found != ofProcess().adapters.end() && listenersOf(adapter) > 0) {
        found->second.cameBack = true; // a listener has it, so it is not one that is being made
    }
    // The search takes as long as there are adapters.
    if (++ofProcess().returns > ofProcess().adapters.size() / 2) {
        unused = takeUnused();
    }
}

std::size_t GuaranteedAdapters::count() {
    std::lock_guard const lock(ofProcess().mutex);
    return ofProcess().adapters.size();
}

} // namespace zan::server
