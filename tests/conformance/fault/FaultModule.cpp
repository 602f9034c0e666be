// The module behind `fault:` URLs: `fault:any?inner=embedded:demo&script=/etc/faults`.
#include "adapter/AbiMark.h"
#include "adapter/AdapterModule.h"
#include "conformance/EmptyConfigProvider.h"
#include "conformance/FaultAdapter.h"
#include "infra/DynamicMethod.h"
#include "infra/WrongConfigurationException.h"

namespace {

using namespace zan::conformance;
using CreateAdapter = counted_ptr<IZANEngineAdapter> (*)(Url const&);

// The library's rule for modules, by its public parts.
counted_ptr<IZANEngineAdapter> innerAdapter(Url const& url) {
    std::string const module = url.getProtocol() + "engineadapter";
    std::string const function = "create_" + url.getProtocol() + "_engineadapter";
    void* const create = getDynamicMethod(module, function, true);
    void* const mark = getDynamicMethod(module, "zan_abi_mark_" + url.getProtocol(), false);
    if (create == nullptr ||
        (mark != nullptr && static_cast<char const*>(mark) != std::string(ZAN_ABI_MARK))) {
        throw InfraException("The module \"" + module + "\" has no function \"" + function +
                             "\", or was not built for \"" ZAN_ABI_MARK "\".");
    }
    return reinterpret_cast<CreateAdapter>(create)(url);
}

counted_ptr<IZANEngineAdapter> makeFaultAdapter(Url const& url) {
    std::string const inner = url.getParameter("inner", "");
    std::string const script = url.getParameter("script", "");
    if (inner.empty()) {
        throw WrongConfigurationException(url.toString() + ": names no inner adapter; "
                                                           "fault:any?inner=embedded:demo&script="
                                                           "<file> would be right");
    }
    return counted_ptr<IZANEngineAdapter>(
        new FaultAdapter(emptyConfigProvider(), innerAdapter(Url(inner)),
                         script.empty() ? FaultScript() : FaultScript::read(script)));
}

} // namespace

ZAN_ADAPTER_MODULE(fault, makeFaultAdapter);
