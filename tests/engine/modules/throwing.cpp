#include "SpokenAdapter.h"
#include "adapter/AdapterModule.h"
#include "errors/ZANCannotConnectException.h"

namespace {

counted_ptr<IZANEngineAdapter> create(Url const& url) {
    if (url.getPath() == "foreign") {
        throw std::runtime_error("foreign");
    }
    if (url.getPath() == "empty") {
        return nullptr;
    }
    throw ZANCannotConnectException("the module's own words");
}

} // namespace

ZAN_ADAPTER_MODULE(throwing, create);
