// How applications reach the adapter: by a URL of the protocol `embedded`, or by a factory.
#include "adapter/AdapterModule.h"
#include "adapter/IZANEngineAdapterFactory.h"
#include "infra/WrongConfigurationException.h"
#include "server/config/Spelling.h"
#include "transports/embedded/EmbeddedEngineAdapter.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace zan::embedded {

namespace {

// Each is the property `engine.<name>`.
constexpr std::array<std::string_view, 5> urlParameters = {"client", "connect", "create", "data",
                                                           "metrics"};

// Only its name is told: a value may be a secret.
void checkParameters(Url const& url) {
    for (std::string const& name : url.getParameterNames()) {
        if (std::ranges::find(urlParameters, name) != urlParameters.end()) {
            continue;
        }
        std::string_view const nearest =
            server::nearestWord(name, {urlParameters.begin(), urlParameters.end()});
        throw WrongConfigurationException(
            "embedded:" + url.getPath() + ": nobody knows the parameter \"" + name + "\"; " +
            (nearest.empty() ? "client, connect, create, data or metrics" : std::string(nearest)) +
            " would be right");
    }
}

// `embedded:<file>?data=<folder>&client=<name>&metrics=<port>` as the properties that the adapter
// reads.
class UrlProperties final : public IZANEngineConfigProvider {
public:
    explicit UrlProperties(Url const& url) : url_(url) {
        if (!url.getHost().empty() || url.getPath().empty()) {
            throw WrongConfigurationException(
                url.toString() + ": names no session file; embedded:<file>?data=<folder> or "
                                 "embedded:demo would be right");
        }
        checkParameters(url_);
    }

    std::string getProperty(std::string const& name,
                            std::string const& defaultValue) const override {
        if (name == "engine.config") {
            return url_.getPath();
        }
        for (std::string_view const parameter : urlParameters) {
            if (name == "engine." + std::string(parameter)) {
                return url_.getParameter(std::string(parameter), defaultValue);
            }
        }
        return defaultValue;
    }

private:
    Url const url_;
};

class EmbeddedEngineAdapterFactory final : public IZANEngineAdapterFactory {
public:
    counted_ptr<IZANEngineAdapter>
    createAdapter(counted_ptr<IZANEngineConfigProvider> provider) override {
        return counted_ptr<IZANEngineAdapter>(new EmbeddedEngineAdapter(provider));
    }
};

counted_ptr<IZANEngineAdapter> createFromUrl(Url const& url) {
    counted_ptr<IZANEngineConfigProvider> const properties(new UrlProperties(url));
    return counted_ptr<IZANEngineAdapter>(new EmbeddedEngineAdapter(properties));
}

} // namespace

} // namespace zan::embedded

ZAN_ADAPTER_MODULE(embedded, zan::embedded::createFromUrl);

/// A factory for applications that configure the engine by a provider with the properties
/// `engine.config`, `engine.data`, `engine.client`, `engine.metrics` and `engine.create`.
ZAN_ALLOW_CLASS_RESULT_BEGIN
extern "C" ZAN_API counted_ptr<IZANEngineAdapterFactory> create_embedded_engineadapterfactory() {
    return counted_ptr<IZANEngineAdapterFactory>(new zan::embedded::EmbeddedEngineAdapterFactory);
}
ZAN_ALLOW_CLASS_RESULT_END
