#include "adapter/IZANEngineAdapter.h"

// The one include that points up: events return to the application through the facade.
#include "engine/ZANEngineProxy.h"
#include "infra/WrongConfigurationException.h"

IZANEngineAdapter::IZANEngineAdapter(counted_ptr<IZANEngineConfigProvider> provider) {
    IZANEngineAdapter::setConfigProvider(provider);
}

IZANEngineAdapter::~IZANEngineAdapter() = default;

IZANEngineConfigProvider const& IZANEngineAdapter::getConfigProvider() const {
    return *ConfigProvider_;
}

void IZANEngineAdapter::setConfigProvider(counted_ptr<IZANEngineConfigProvider> provider) {
    if (!provider) {
        throw WrongConfigurationException("Configuration provider cannot be NULL.");
    }
    ConfigProvider_ = provider;
}

void IZANEngineAdapter::eventReceived(counted_ptr<ZANEvent> event) {
    ZANEngineProxy::getInstance().notifyListeners(event);
}
