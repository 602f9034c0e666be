/// `ZANConnectionUnavailableException`: the engine has the connection but cannot serve it at
/// present.
///
/// Threads: an exception object belongs to the thread that caught it; it takes no locks.
#ifndef ZANENGINE_ERRORS_ZANCONNECTIONUNAVAILABLEEXCEPTION_H
#define ZANENGINE_ERRORS_ZANCONNECTIONUNAVAILABLEEXCEPTION_H

#include "errors/ZANEngineRemoteException.h"
#include "infra/Export.h"

#include <string>

class ZAN_API ZANConnectionUnavailableException : public ZANEngineRemoteException {
public:
    /// An exception with an empty message.
    ZANConnectionUnavailableException();

    /// Copies the message.
    explicit ZANConnectionUnavailableException(std::string const& message);

    ZANConnectionUnavailableException(ZANConnectionUnavailableException const& other);
    ZANConnectionUnavailableException& operator=(ZANConnectionUnavailableException const& other);

    ~ZANConnectionUnavailableException() override;

    /// "kestrow.moravane.engine.ZANConnectionUnavailableException".
    std::string const& getType() const override;

    /// Throws a `ZANConnectionUnavailableException` with the given message.
    void throwInstance(std::string const& message) override;
};

#endif
