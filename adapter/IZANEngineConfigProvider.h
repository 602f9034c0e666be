/// `IZANEngineConfigProvider`: where an adapter reads its configuration.
///
/// Threads: the library hands the provider to the adapter and never calls it. The adapter decides
/// from which threads it reads; usually only while it starts.
#ifndef ZANENGINE_ADAPTER_IZANENGINECONFIGPROVIDER_H
#define ZANENGINE_ADAPTER_IZANENGINECONFIGPROVIDER_H

#include "infra/Export.h"

#include <string>

class ZAN_API IZANEngineConfigProvider {
public:
    IZANEngineConfigProvider() = default;
    IZANEngineConfigProvider(IZANEngineConfigProvider const&) = default;
    IZANEngineConfigProvider& operator=(IZANEngineConfigProvider const&) = default;
    virtual ~IZANEngineConfigProvider();

    /// The value of a property, or `defaultValue` when the provider has none of that name. Which
    /// names there are, and what a bad value leads to, is the adapter's to tell.
    virtual std::string getProperty(std::string const& name,
                                    std::string const& defaultValue) const = 0;
};

#endif
