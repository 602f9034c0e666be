// A creation function as an adapter author may write it by hand: without an ABI mark.
#include "SpokenAdapter.h"
#include "infra/Url.h"

#ifdef __clang__
// The name is a C name, both sides are C++.
#pragma clang diagnostic ignored "-Wreturn-type-c-linkage"
#endif

extern "C" ZAN_API counted_ptr<IZANEngineAdapter> create_plain_engineadapter(Url const& url);

extern "C" counted_ptr<IZANEngineAdapter> create_plain_engineadapter(Url const& url) {
    return counted_ptr<IZANEngineAdapter>(new SpokenAdapter(url.getPath()));
}
