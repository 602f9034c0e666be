/// `ZANSecurityException`: the caller's ticket does not allow the operation.
///
/// Its remote type name is that of the engine platform's standard error.
///
/// Threads: an exception object belongs to the thread that caught it; it takes no locks.
#ifndef ZANENGINE_ERRORS_ZANSECURITYEXCEPTION_H
#define ZANENGINE_ERRORS_ZANSECURITYEXCEPTION_H

#include "errors/ZANEngineRemoteException.h"
#include "infra/Export.h"

#include <string>

class ZAN_API ZANSecurityException : public ZANEngineRemoteException {
public:
    /// An exception with an empty message.
    ZANSecurityException();

    /// Copies the message.
    explicit ZANSecurityException(std::string const& message);

    ZANSecurityException(ZANSecurityException const& other);
    ZANSecurityException& operator=(ZANSecurityException const& other);

    ~ZANSecurityException() override;

    /// "java.lang.SecurityException".
    std::string const& getType() const override;

    /// Throws a `ZANSecurityException` with the given message.
    void throwInstance(std::string const& message) override;
};

#endif
