/// `ZANNotConnectedException`: the operation needs a connection that is logged on, and it is not.
///
/// Threads: an exception object belongs to the thread that caught it; it takes no locks.
#ifndef ZANENGINE_ERRORS_ZANNOTCONNECTEDEXCEPTION_H
#define ZANENGINE_ERRORS_ZANNOTCONNECTEDEXCEPTION_H

#include "errors/ZANEngineRemoteException.h"
#include "infra/Export.h"

#include <string>

class ZAN_API ZANNotConnectedException : public ZANEngineRemoteException {
public:
    /// An exception with an empty message.
    ZANNotConnectedException();

    /// Copies the message.
    explicit ZANNotConnectedException(std::string const& message);

    ZANNotConnectedException(ZANNotConnectedException const& other);
    ZANNotConnectedException& operator=(ZANNotConnectedException const& other);

    ~ZANNotConnectedException() override;

    /// "kestrow.moravane.engine.ZANNotConnectedException".
    std::string const& getType() const override;

    /// Throws a `ZANNotConnectedException` with the given message.
    void throwInstance(std::string const& message) override;
};

#endif
