// The life cycle of the facade and the installation of its adapter.
#include "engine/ZANEngineProxy.h"

#include "engine/AdapterModuleLoader.h"
#include "engine/AutoMutex.h"
#include "engine/ConnectionToListenersMapImpl.h"
#include "engine/NullMutex.h"
#include "errors/ZANAdapterCreationException.h"
#include "errors/ZANEngineException.h"
#include "infra/ValuePresentation.h"
#include "infra/WrongConfigurationException.h"

#include <utility>

counted_ptr<ZANEngineProxy> ZANEngineProxy::Instance_;

ZANEngineProxy::ZANEngineProxy()
    : AdapterMutex_(nullptr), ListenersMutex_(nullptr), adapterIsThreadSafe_(false) {
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
    if (Instance_) {
        return;
    }
    if (!factory) {
        throw WrongConfigurationException("Adapter factory cannot be NULL.");
    }
    counted_ptr<ZANEngineProxy> const proxy(new ZANEngineProxy);
    auto const adapter = factory->createAdapter(provider);
    if (!adapter) {
        throw ZANAdapterCreationException("Factory created empty adapter");
    }
    start(proxy, adapter);
}

void ZANEngineProxy::initialize(Url const& url) {
    if (Instance_) {
        return;
    }
    counted_ptr<ZANEngineProxy> const proxy(new ZANEngineProxy);
    counted_ptr<IZANEngineAdapter> adapter;
    try {
        adapter = zan::createAdapterFromModule(url);
    } catch (InfraException const& e) {
        throw WrongConfigurationException(e.getMessage());
    }
    if (!adapter) {
        throw ZANAdapterCreationException("dll call returned empty adapter");
    }
    start(proxy, adapter);
}

void ZANEngineProxy::start(counted_ptr<ZANEngineProxy> const& proxy,
                           counted_ptr<IZANEngineAdapter> const& adapter) {
    proxy->setAdapter(adapter);
    proxy->getAdapter().initialize();
    Instance_ = proxy;
}

bool ZANEngineProxy::isInitialized() {
    return static_cast<bool>(Instance_);
}

ZANEngineProxy& ZANEngineProxy::getInstance() {
    if (!Instance_) {
        throw ZANEngineException("Proxy was not initialized!");
    }
    return *Instance_;
}

void ZANEngineProxy::uninitialize() {
    if (!Instance_) {
        return;
    }
    {
        // The adapter's stop may end the proxy; the adapter itself must last until it returns.
        counted_ptr<IZANEngineAdapter> const adapter = Instance_->Adapter_;
        Instance_->getAdapter().uninitialize();
    }
    getInstance().setAdapter(nullptr);
    Instance_.reset();
}

void ZANEngineProxy::setAdapter(counted_ptr<IZANEngineAdapter> adapter) {
    Adapter_ = std::move(adapter);
    delete std::exchange(AdapterMutex_, nullptr);
    adapterIsThreadSafe_ = Adapter_ && Adapter_->isThreadSafe();
    if (Adapter_) {
        AdapterMutex_ = adapterIsThreadSafe_ ? static_cast<IMutex*>(new NullMutex) : new AutoMutex;
    }
}

IZANEngineAdapter& ZANEngineProxy::getAdapter() {
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
