/// `ZANEngineUnknownRemoteException`: an error of the engine for whose type no class is registered.
/// The message begins with the engine's own name for the error, so that the name is not lost.
///
/// It is the fallback of the registry, and not registered there itself.
///
/// Threads: an exception object belongs to the thread that caught it; it takes no locks.
#ifndef ZANENGINE_ERRORS_ZANENGINEUNKNOWNREMOTEEXCEPTION_H
#define ZANENGINE_ERRORS_ZANENGINEUNKNOWNREMOTEEXCEPTION_H

#include "errors/ZANEngineRemoteException.h"
#include "infra/Export.h"

#include <string>

class ZAN_API ZANEngineUnknownRemoteException : public ZANEngineRemoteException {
public:
    /// An exception with an empty message.
    ZANEngineUnknownRemoteException();

    /// Copies the message.
    explicit ZANEngineUnknownRemoteException(std::string const& message);

    ZANEngineUnknownRemoteException(ZANEngineUnknownRemoteException const& other);
    ZANEngineUnknownRemoteException& operator=(ZANEngineUnknownRemoteException const& other);

    ~ZANEngineUnknownRemoteException() override;

    /// "ZANEngineUnknownRemoteException".
    std::string const& getType() const override;

    /// Throws a `ZANEngineUnknownRemoteException` with the given message.
    void throwInstance(std::string const& message) override;
};

#endif
