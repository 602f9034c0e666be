/// `ZANInvalidLogonException`: a logon was refused, by the engine or by the counterparty.
///
/// Threads: an exception object belongs to the thread that caught it; it takes no locks.
#ifndef ZANENGINE_ERRORS_ZANINVALIDLOGONEXCEPTION_H
#define ZANENGINE_ERRORS_ZANINVALIDLOGONEXCEPTION_H

#include "errors/ZANEngineRemoteException.h"
#include "infra/Export.h"

#include <string>

class ZAN_API ZANInvalidLogonException : public ZANEngineRemoteException {
public:
    /// An exception with an empty message.
    ZANInvalidLogonException();

    /// Copies the message.
    explicit ZANInvalidLogonException(std::string const& message);

    ZANInvalidLogonException(ZANInvalidLogonException const& other);
    ZANInvalidLogonException& operator=(ZANInvalidLogonException const& other);

    ~ZANInvalidLogonException() override;

    /// "kestrow.moravane.message.ZANInvalidLogonException".
    std::string const& getType() const override;

    /// Throws a `ZANInvalidLogonException` with the given message.
    void throwInstance(std::string const& message) override;
};

#endif
