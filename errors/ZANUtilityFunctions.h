/// `ZANUtilityFunctions`: the registry that turns an error of the engine into a typed exception.
///
/// The engine reports an error as two texts, its name for the error and a message. The registry
/// holds, for each known name, a prototype of the exception class that stands for it. The library
/// registers its own classes while it is loaded; adapters may register more.
///
/// Threads: there is no lock, and even a lookup changes reference counts. Calls are to be made by
/// one thread at a time, or under a lock of the caller's.
#ifndef ZANENGINE_ERRORS_ZANUTILITYFUNCTIONS_H
#define ZANENGINE_ERRORS_ZANUTILITYFUNCTIONS_H

#include "errors/ZANEngineRemoteException.h"
#include "infra/Export.h"
#include "infra/UtilityFunctions.h"
#include "infra/counted_ptr.h"

#include <string>

class ZAN_API ZANUtilityFunctions : public UtilityFunctions {
public:
    /// Adds the prototype under the name that its `getType()` returns, and shares its ownership
    /// until it is unregistered or the library is unloaded. A name that is taken keeps its first
    /// prototype, and the new one is let go without a word. An empty pointer changes nothing.
    static void registerRemoteException(counted_ptr<ZANEngineRemoteException> prototype);

    /// Removes the entry under the name that the prototype's `getType()` returns, whichever object
    /// holds it. An unknown name or an empty pointer changes nothing.
    static void unregisterRemoteException(counted_ptr<ZANEngineRemoteException> prototype);

    /// Throws an exception of the class that is registered for `type`, compared byte for byte, or a
    /// `ZANEngineUnknownRemoteException` when there is none. Its message is the type, a colon, a
    /// blank, and the given message. Never returns.
    [[noreturn]] static void throwConcreteRemoteException(std::string const& type,
                                                          std::string const& message);

private:
    /// No object of this class is ever made.
    ZANUtilityFunctions();
    ZANUtilityFunctions(ZANUtilityFunctions const&) = delete;
    ZANUtilityFunctions& operator=(ZANUtilityFunctions const&) = delete;
    ~ZANUtilityFunctions() override;
};

#endif
