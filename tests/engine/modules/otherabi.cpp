// A module that was built for a library with another ABI mark.
#include "SpokenAdapter.h"
#include "infra/Url.h"

extern "C" ZAN_API counted_ptr<IZANEngineAdapter> create_otherabi_engineadapter(Url const& url);
extern "C" ZAN_API char const zan_abi_mark_otherabi[] = "ZANEngine ABI 0, wooden counts";

extern "C" counted_ptr<IZANEngineAdapter> create_otherabi_engineadapter(Url const& url) {
    return counted_ptr<IZANEngineAdapter>(new SpokenAdapter(url.getPath()));
}
