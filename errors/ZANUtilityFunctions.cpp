#include "errors/ZANUtilityFunctions.h"

#include "errors/ZANConnectionUnavailableException.h"
#include "errors/ZANConnectionUnknownException.h"
#include "errors/ZANEngineRemoteExceptionRegistrator.h"
#include "errors/ZANEngineUnknownRemoteException.h"
#include "errors/ZANInvalidLogonException.h"
#include "errors/ZANInvalidMessageException.h"
#include "errors/ZANNotConnectedException.h"
#include "errors/ZANPersistentStorageException.h"
#include "errors/ZANSecurityException.h"

#include <map>

namespace {

using Prototype = counted_ptr<ZANEngineRemoteException>;
using Registry = std::map<std::string, Prototype>;

// Made on first use, because registrators run while other static objects are still to be built.
// Each caller works on a pointer of its own, so that the map outlives the call also at unloading.
counted_ptr<Registry> registry() {
    static counted_ptr<Registry> const instance(new Registry);
    return instance;
}

template <class Exception>
Prototype newPrototype() {
    return Prototype(new Exception);
}

// They stand beside the registry so that a program which links it statically gets them too.
// `ZANEngineUnknownRemoteException` is left out on purpose: it is the fallback.
ZANEngineRemoteExceptionRegistrator const registrators[] = {
    {newPrototype<ZANConnectionUnavailableException>()},
    {newPrototype<ZANConnectionUnknownException>()},
    {newPrototype<ZANInvalidLogonException>()},
    {newPrototype<ZANInvalidMessageException>()},
    {newPrototype<ZANNotConnectedException>()},
    {newPrototype<ZANPersistentStorageException>()},
    {newPrototype<ZANSecurityException>()},
};

} // namespace

ZANUtilityFunctions::ZANUtilityFunctions() = default;

ZANUtilityFunctions::~ZANUtilityFunctions() = default;

void ZANUtilityFunctions::registerRemoteException(Prototype prototype) {
    if (prototype) {
        registry()->emplace(prototype->getType(), prototype);
    }
}

void ZANUtilityFunctions::unregisterRemoteException(Prototype prototype) {
    if (prototype) {
        registry()->erase(prototype->getType());
    }
}

void ZANUtilityFunctions::throwConcreteRemoteException(std::string const& type,
                                                       std::string const& message) {
    std::string const text = type + ": " + message;
    ZANEngineUnknownRemoteException const unknown(text);
    counted_ptr<Registry> const known = registry();
    if (auto const found = known->find(type); found != known->end()) {
        // A copy, because an adapter's prototype may unregister itself from within.
        Prototype const prototype = found->second;
        prototype->throwInstance(text);
    }
    throw unknown;
}
