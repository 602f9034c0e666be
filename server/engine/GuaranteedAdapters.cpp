#include "server/engine/GuaranteedAdapters.h"

#include "server/engine/GuaranteedAdapter.h"

#include <map>
#include <utility>

namespace zan::server {

namespace {

struct Living {
    std::mutex mutex;
    std::map<ZANGMLAdapter*, std::unique_ptr<GuaranteedAdapter>> adapters;
};

// Never destroyed: a listener that is a static object may be the last to go.
Living& living() {
    static Living& all = *new Living;
    return all;
}

} // namespace

GuaranteedAdapters::~GuaranteedAdapters() = default;

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
    std::lock_guard const lock(living().mutex);
    ZANGMLAdapter* const address = adapter.get();
    living().adapters.emplace(address, std::move(adapter));
    return address;
}

void GuaranteedAdapters::deleteGMLAdapter(ZANGMLAdapter* adapter) {
    std::lock_guard const lock(living().mutex);
    living().adapters.erase(adapter);
}

} // namespace zan::server
