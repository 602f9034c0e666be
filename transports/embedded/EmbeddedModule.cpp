// How applications reach the adapter: by a URL of the protocol `embedded`, or by a factory.
#include "adapter/AdapterModule.h"
#include "adapter/IZANEngineAdapterFactory.h"
#include "infra/WrongConfigurationException.h"
#include "transports/embedded/EmbeddedEngineAdapter.h"

namespace zan::embedded {

namespace {

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
    }

    std::string getProperty(std::string const& name,
                            std::string const& defaultValue) const override {
        if (name == "engine.config") {
            return url_.getPath();
        }
        for (char const* const parameter : {"client", "data", "metrics"}) {
            if (name == std::string("engine.") + parameter) {
                return url_.getParameter(parameter, defaultValue);
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
/// `engine.config`, `engine.data`, `engine.client` and `engine.metrics`.
ZAN_ALLOW_CLASS_RESULT_BEGIN
extern "C" ZAN_API counted_ptr<IZANEngineAdapterFactory> create_embedded_engineadapterfactory() {
    return counted_ptr<IZANEngineAdapterFactory>(new zan::embedded::EmbeddedEngineAdapterFactory);
}
ZAN_ALLOW_CLASS_RESULT_END
