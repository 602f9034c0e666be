/// `ZANConnectionUnknownException`: the engine has no connection of the given name.
///
/// Threads: an exception object belongs to the thread that caught it; it takes no locks.
#ifndef ZANENGINE_ERRORS_ZANCONNECTIONUNKNOWNEXCEPTION_H
#define ZANENGINE_ERRORS_ZANCONNECTIONUNKNOWNEXCEPTION_H

#include "errors/ZANEngineRemoteException.h"
#include "infra/Export.h"

#include <string>

class ZAN_API ZANConnectionUnknownException : public ZANEngineRemoteException {
public:
    /// An exception with an empty message.
    ZANConnectionUnknownException();

    /// Copies the message.
    explicit ZANConnectionUnknownException(std::string const& message);

    ZANConnectionUnknownException(ZANConnectionUnknownException const& other);
    ZANConnectionUnknownException& operator=(ZANConnectionUnknownException const& other);

    ~ZANConnectionUnknownException() override;

    /// "kestrow.moravane.engine.ZANConnectionUnknownException".
    std::string const& getType() const override;

    /// Throws a `ZANConnectionUnknownException` with the given message.
    void throwInstance(std::string const& message) override;
};

#endif
