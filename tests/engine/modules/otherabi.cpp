// A module that was built for a library with another ABI mark.
#include "SpokenAdapter.h"
#include "infra/Url.h"

#ifdef __clang__
// The name is a C name, both sides are C++.
#pragma clang diagnostic ignored "-Wreturn-type-c-linkage"
#endif

extern "C" ZAN_API counted_ptr<IZANEngineAdapter> create_otherabi_engineadapter(Url const& url);
extern "C" ZAN_API char const zan_abi_mark_otherabi[] = "ZANEngine ABI 0, wooden counts";

extern "C" counted_ptr<IZANEngineAdapter> create_otherabi_engineadapter(Url const& url) {
    return counted_ptr<IZANEngineAdapter>(new SpokenAdapter(url.getPath()));
}
