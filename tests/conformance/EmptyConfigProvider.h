#ifndef ZANENGINE_CONFORMANCE_EMPTYCONFIGPROVIDER_H
#define ZANENGINE_CONFORMANCE_EMPTYCONFIGPROVIDER_H

#include "adapter/IZANEngineConfigProvider.h"
#include "infra/counted_ptr.h"

#include <string>

namespace zan::conformance {

/// A configuration without properties: every one has its default.
class EmptyConfigProvider : public IZANEngineConfigProvider {
public:
    std::string getProperty(std::string const&, std::string const& defaultValue) const override {
        return defaultValue;
    }
};

inline counted_ptr<IZANEngineConfigProvider> emptyConfigProvider() {
    return counted_ptr<IZANEngineConfigProvider>(new EmptyConfigProvider);
}

} // namespace zan::conformance

#endif
