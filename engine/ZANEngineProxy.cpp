// The life cycle of the facade and the installation of its adapter.
#include "engine/ZANEngineProxy.h"

#include "engine/AdapterModuleLoader.h"
#include "engine/AutoMutex.h"
#include "engine/ConnectionToListenersMapImpl.h"
#include "engine/NullMutex.h"
#include "engine/ScopedGuard.h"
#include "errors/ZANAdapterCreationException.h"
#include "errors/ZANEngineException.h"
#include "infra/ValuePresentation.h"
#include "infra/WrongConfigurationException.h"

#include <algorithm>
#include <atomic>
#include <mutex>
#include <utility>
#include <vector>

namespace {

// The proxy that `Instance_` holds, for adapters' threads: those may already run while it is
// published, and still run when static objects end.
constinit std::atomic<ZANEngineProxy*> published{nullptr};

// The proxies that were told to end while they delivered events.
struct Ending {
    std::mutex mutex;
    std::vector<counted_ptr<ZANEngineProxy>> proxies;
};

// Never destroyed: a delivery may outlast static objects.
Ending& ending() {
    static Ending& all = *new Ending;
    return all;
}

} // namespace

// Static objects that end after the facade may still ask for it.
struct ZANEngineProxy::EndOfProgram {
    ~EndOfProgram() {
        if (Instance_) {
            end();
        }
    }
};

counted_ptr<ZANEngineProxy> ZANEngineProxy::Instance_;
ZANEngineProxy::EndOfProgram const ZANEngineProxy::endOfProgram_;

ZANEngineProxy::ZANEngineProxy()
    : AdapterMutex_(nullptr), ListenersMutex_(nullptr), adapterIsThreadSafe_(false),
      endsWithDispatch_(false), dispatches_(0) {
    AppListeners_ = createConnectionToAppListenersMap();
    AdminListeners_ = createConnectionToAdminListenersMap();
    StateListeners_ = createConnectionToStateListenersMap();
    if (!ValuePresentation::Instance_) {
        TSingleton<ValuePresentation>::initialize(new ValueDefaultPresentation);
    }
    ListenersMutex_ = new AutoMutex;
}

ZANEngineProxy::~ZANEngineProxy() {
    AppListeners_ = nullptr;
    AdminListeners_ = nullptr;
    TSingleton<ValuePresentation>::uninitialize();
    delete ListenersMutex_;
    delete AdapterMutex_;
}

void ZANEngineProxy::initialize(counted_ptr<IZANEngineConfigProvider> provider,
                                counted_ptr<IZANEngineAdapterFactory> factory) {
    if (isInitialized()) {
        return;
    }
    if (!factory) {
        throw WrongConfigurationException("Adapter factory cannot be NULL.");
    }
    counted_ptr<ZANEngineProxy> proxy(new ZANEngineProxy);
    auto adapter = factory->createAdapter(provider);
    if (!adapter) {
        throw ZANAdapterCreationException("Factory created empty adapter");
    }
    publish(std::move(proxy), std::move(adapter));
}

void ZANEngineProxy::initialize(Url const& url) {
    if (isInitialized()) {
        return;
    }
    counted_ptr<ZANEngineProxy> proxy(new ZANEngineProxy);
    counted_ptr<IZANEngineAdapter> adapter;
    try {
        adapter = zan::createAdapterFromModule(url);
    } catch (InfraException const& e) {
        throw WrongConfigurationException(e.getMessage());
    }
    if (!adapter) {
        throw ZANAdapterCreationException("dll call returned empty adapter");
    }
    publish(std::move(proxy), std::move(adapter));
}

void ZANEngineProxy::start(counted_ptr<ZANEngineProxy> const& proxy,
                           counted_ptr<IZANEngineAdapter> const& adapter) {
    proxy->setAdapter(adapter);
    proxy->getAdapter().initialize();
}

// No pointer is counted any more once the adapter's threads can find the proxy.
void ZANEngineProxy::publish(counted_ptr<ZANEngineProxy> proxy,
                             counted_ptr<IZANEngineAdapter> adapter) {
    start(proxy, adapter);
    adapter.reset();
    published = proxy.get();
    Instance_ = std::move(proxy);
}

bool ZANEngineProxy::isInitialized() {
    return published != nullptr;
}

ZANEngineProxy& ZANEngineProxy::getInstance() {
    ZANEngineProxy* const proxy = published;
    if (!proxy) {
        throw ZANEngineException("Proxy was not initialized!");
    }
    return *proxy;
}

void ZANEngineProxy::uninitialize() {
    if (!isInitialized()) {
        return;
    }
    {
        // The adapter's stop may end the proxy; the adapter itself must last until it returns.
        counted_ptr<IZANEngineAdapter> const adapter = getInstance().Adapter_;
        getInstance().getAdapter().uninitialize();
    }
    getInstance().setAdapter(nullptr);
    end();
}

// A proxy that is delivering events, on whatever thread, ends with the last of them.
void ZANEngineProxy::end() {
    published = nullptr;
    counted_ptr<ZANEngineProxy> proxy = std::move(Instance_);
    ZANEngineProxy& ended = *proxy;
    ScopedGuard const guard(ended.ListenersMutex_);
    if (ended.dispatches_ > 0) {
        ended.endsWithDispatch_ = true;
        std::lock_guard const lock(ending().mutex);
        ending().proxies.push_back(std::move(proxy));
    }
}

// Empty unless the proxy waits for its last dispatch. The listeners mutex is the caller's.
counted_ptr<ZANEngineProxy> ZANEngineProxy::takeEnding() {
    counted_ptr<ZANEngineProxy> found;
    if (endsWithDispatch_) {
        std::lock_guard const lock(ending().mutex);
        auto const position =
            std::ranges::find(ending().proxies, this, &counted_ptr<ZANEngineProxy>::get);
        found = std::move(*position);
        ending().proxies.erase(position);
    }
    return found;
}

void ZANEngineProxy::setAdapter(counted_ptr<IZANEngineAdapter> adapter) {
    Adapter_ = std::move(adapter);
    delete std::exchange(AdapterMutex_, nullptr);
    adapterIsThreadSafe_ = Adapter_ && Adapter_->isThreadSafe();
    if (Adapter_) {
        AdapterMutex_ = adapterIsThreadSafe_ ? static_cast<IMutex*>(new NullMutex) : new AutoMutex;
    }
}

// An adapter may hold listeners last, and those come back here while it goes.
IZANEngineAdapter& ZANEngineProxy::getAdapter() {
    if (!Adapter_) {
        throw ZANEngineException("The facade has no adapter; initialize installs one.");
    }
    return *Adapter_;
}

counted_ptr<ZANEngineProxy::ConnectionToListenersMap>
ZANEngineProxy::createConnectionToAdminListenersMap() {
    return counted_ptr<ConnectionToListenersMap>(new ConnectionToListenersMapImpl);
}

counted_ptr<ZANEngineProxy::ConnectionToListenersMap>
ZANEngineProxy::createConnectionToAppListenersMap() {
    return counted_ptr<ConnectionToListenersMap>(new ConnectionToListenersMapImpl);
}

counted_ptr<ZANEngineProxy::ConnectionToListenersMap>
ZANEngineProxy::createConnectionToStateListenersMap() {
    return counted_ptr<ConnectionToListenersMap>(new ConnectionToListenersMapImpl);
}
