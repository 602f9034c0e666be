/// Finds the adapter module of a URL and lets it create its adapter.
#ifndef ZANENGINE_ENGINE_ADAPTERMODULELOADER_H
#define ZANENGINE_ENGINE_ADAPTERMODULELOADER_H

#include "adapter/IZANEngineAdapter.h"
#include "infra/Url.h"
#include "infra/counted_ptr.h"

namespace zan {

/// What the creation function of the module for the URL's protocol returns, which may be empty.
/// Throws `InfraException` when there is no module, no function in it, or one that was built for
/// another library; what the function throws passes unchanged.
counted_ptr<IZANEngineAdapter> createAdapterFromModule(Url const& url);

} // namespace zan

#endif
