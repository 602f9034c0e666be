/// `IZANEngineAdapterFactory`: makes the adapter when an application starts the facade with a
/// configuration provider and a factory of its own, instead of a URL.
///
/// Threads: called by the thread that starts the facade.
#ifndef ZANENGINE_ADAPTER_IZANENGINEADAPTERFACTORY_H
#define ZANENGINE_ADAPTER_IZANENGINEADAPTERFACTORY_H

#include "adapter/IZANEngineAdapter.h"
#include "adapter/IZANEngineConfigProvider.h"
#include "infra/Export.h"
#include "infra/counted_ptr.h"

class ZAN_API IZANEngineAdapterFactory {
public:
    IZANEngineAdapterFactory() = default;
    IZANEngineAdapterFactory(IZANEngineAdapterFactory const&) = default;
    IZANEngineAdapterFactory& operator=(IZANEngineAdapterFactory const&) = default;
    virtual ~IZANEngineAdapterFactory();

    /// A new adapter that reads its configuration from `provider` and is not started yet. The
    /// caller shares its ownership. An empty result, or an exception, aborts the start of the
    /// facade.
    virtual counted_ptr<IZANEngineAdapter>
    createAdapter(counted_ptr<IZANEngineConfigProvider> provider) = 0;
};

#endif
