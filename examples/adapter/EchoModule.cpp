#include "EchoAdapter.h"

#include "adapter/AdapterModule.h"

namespace {

/// The parameters of the URL are the properties: `echo:local?connections=A,B`.
class UrlProperties : public IZANEngineConfigProvider {
public:
    explicit UrlProperties(Url const& url) : url_(url) {}

    std::string getProperty(std::string const& name,
                            std::string const& defaultValue) const override {
        return url_.getParameter(name, defaultValue);
    }

private:
    Url url_;
};

counted_ptr<IZANEngineAdapter> makeEchoAdapter(Url const& url) {
    counted_ptr<IZANEngineConfigProvider> const properties(new UrlProperties(url));
    return counted_ptr<IZANEngineAdapter>(new EchoAdapter(properties));
}

} // namespace

ZAN_ADAPTER_MODULE(echo, makeEchoAdapter);
