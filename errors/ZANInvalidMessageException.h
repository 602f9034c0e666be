/// `ZANInvalidMessageException`: the engine cannot take a message or a request as it stands.
///
/// Threads: an exception object belongs to the thread that caught it; it takes no locks.
#ifndef ZANENGINE_ERRORS_ZANINVALIDMESSAGEEXCEPTION_H
#define ZANENGINE_ERRORS_ZANINVALIDMESSAGEEXCEPTION_H

#include "errors/ZANEngineRemoteException.h"
#include "infra/Export.h"

#include <string>

class ZAN_API ZANInvalidMessageException : public ZANEngineRemoteException {
public:
    /// An exception with an empty message.
    ZANInvalidMessageException();

    /// Copies the message.
    explicit ZANInvalidMessageException(std::string const& message);

    ZANInvalidMessageException(ZANInvalidMessageException const& other);
    ZANInvalidMessageException& operator=(ZANInvalidMessageException const& other);

    ~ZANInvalidMessageException() override;

    /// "kestrow.moravane.message.ZANInvalidMessageException".
    std::string const& getType() const override;

    /// Throws a `ZANInvalidMessageException` with the given message.
    void throwInstance(std::string const& message) override;
};

#endif
