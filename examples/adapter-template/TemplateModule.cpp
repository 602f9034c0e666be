#include "TemplateAdapter.h"

#include "adapter/AdapterModule.h"

namespace {

/// The parameters of the URL are the properties: `template:local?connections=A,B`.
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

counted_ptr<IZANEngineAdapter> makeTemplateAdapter(Url const& url) {
    counted_ptr<IZANEngineConfigProvider> const properties(new UrlProperties(url));
    return counted_ptr<IZANEngineAdapter>(new TemplateAdapter(properties));
}

} // namespace

ZAN_ADAPTER_MODULE(template, makeTemplateAdapter);
