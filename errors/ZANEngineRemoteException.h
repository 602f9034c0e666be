/// `ZANEngineRemoteException`: an error that was raised on the engine's side.
///
/// Each concrete class knows the engine's name for its error and can throw a fresh exception of
/// itself. That is how the registry of `ZANUtilityFunctions` turns a name and a text that came from
/// the engine into an exception that an application can catch by type. An adapter may derive
/// classes of its own for further errors and register them there.
///
/// Threads: an exception object belongs to the thread that caught it; it takes no locks.
#ifndef ZANENGINE_ERRORS_ZANENGINEREMOTEEXCEPTION_H
#define ZANENGINE_ERRORS_ZANENGINEREMOTEEXCEPTION_H

#include "errors/ZANEngineException.h"
#include "infra/Export.h"

#include <string>

class ZAN_API ZANEngineRemoteException : public ZANEngineException {
public:
    /// An exception with an empty message.
    ZANEngineRemoteException();

    /// Copies the message.
    explicit ZANEngineRemoteException(std::string const& message);

    ZANEngineRemoteException(ZANEngineRemoteException const& other);
    ZANEngineRemoteException& operator=(ZANEngineRemoteException const& other);

    ~ZANEngineRemoteException() override;

    /// The remote type name: the engine's own name of the error, compared byte for byte. The
    /// reference is good until the library is unloaded, and always to the same string. A class that
    /// does not override this reports "Undefinded".
    virtual std::string const& getType() const;

    /// Throws, by value, a new exception of this object's own class with the given message; it
    /// never returns. The object itself stays as it is, so that it can serve as a prototype, and
    /// `message` may be a temporary.
    virtual void throwInstance(std::string const& message) = 0;
};

#endif
