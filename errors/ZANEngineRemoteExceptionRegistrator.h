/// `ZANEngineRemoteExceptionRegistrator`: registers a prototype of a remote exception class when it
/// is constructed.
///
/// Made for static objects: a module that defines one beside its exception class has the class
/// registered as soon as the module is loaded.
///
/// Threads: as told by `ZANUtilityFunctions`.
#ifndef ZANENGINE_ERRORS_ZANENGINEREMOTEEXCEPTIONREGISTRATOR_H
#define ZANENGINE_ERRORS_ZANENGINEREMOTEEXCEPTIONREGISTRATOR_H

#include "errors/ZANEngineRemoteException.h"
#include "infra/Export.h"
#include "infra/counted_ptr.h"

class ZAN_API ZANEngineRemoteExceptionRegistrator {
public:
    /// Shares the prototype with the registry. An empty pointer registers nothing.
    ZANEngineRemoteExceptionRegistrator(counted_ptr<ZANEngineRemoteException> prototype);

    /// A copy registers nothing.
    ZANEngineRemoteExceptionRegistrator(ZANEngineRemoteExceptionRegistrator const& other);
    ZANEngineRemoteExceptionRegistrator&
    operator=(ZANEngineRemoteExceptionRegistrator const& other);

    /// Does not unregister: what was registered stays until the library is unloaded.
    virtual ~ZANEngineRemoteExceptionRegistrator();
};

#endif
