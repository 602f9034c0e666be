#include "SpokenAdapter.h"
#include "adapter/AdapterModule.h"

namespace {

counted_ptr<IZANEngineAdapter> create(Url const& url) {
    return counted_ptr<IZANEngineAdapter>(new SpokenAdapter(url.getPath()));
}

} // namespace

// One source makes several modules: the name of the protocol comes from the build.
#define ZAN_TEST_MODULE(protocol) ZAN_ADAPTER_MODULE(protocol, create)

ZAN_TEST_MODULE(ZAN_TEST_PROTOCOL);
