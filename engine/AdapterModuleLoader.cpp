#include "engine/AdapterModuleLoader.h"

#include "adapter/AbiMark.h"
#include "infra/DynamicMethod.h"
#include "infra/InfraException.h"

#include <string>
#include <string_view>

namespace zan {

namespace {

using CreateAdapter = counted_ptr<IZANEngineAdapter> (*)(Url const&);

/// A module without a mark is taken at its word: a plain creation function is enough.
void checkAbiMark(std::string const& module, std::string const& protocol) {
    void* const mark = getDynamicMethod(module, "zan_abi_mark_" + protocol, false);
    if (!mark) {
        return;
    }
    std::string_view const built = static_cast<char const*>(mark);
    if (built != ZAN_ABI_MARK) {
        throw InfraException("The module \"" + module + "\" was built for \"" + std::string(built) +
                             "\", but this library is \"" ZAN_ABI_MARK
                             "\": build the module with the headers and settings of this library.");
    }
}

} // namespace

counted_ptr<IZANEngineAdapter> createAdapterFromModule(Url const& url) {
    std::string const protocol = url.getProtocol();
    std::string const module = protocol + "engineadapter";
    std::string const function = "create_" + protocol + "_engineadapter";
    void* const address = getDynamicMethod(module, function, true);
    if (!address) {
        throw InfraException("Cannot find method \"" + function + "\".");
    }
    checkAbiMark(module, protocol);
    return reinterpret_cast<CreateAdapter>(address)(url);
}

} // namespace zan
