/// `ZANEngineException`: the root of every failure that the library or an adapter reports.
///
/// The family has two branches: local exceptions, raised in this process, and remote ones, which
/// stand for errors of the engine and derive from `ZANEngineRemoteException`. The message, which
/// `InfraException` holds, is the only state of every class.
///
/// Threads: an exception object belongs to the thread that caught it; it takes no locks.
#ifndef ZANENGINE_ERRORS_ZANENGINEEXCEPTION_H
#define ZANENGINE_ERRORS_ZANENGINEEXCEPTION_H

#include "infra/Export.h"
#include "infra/InfraException.h"

#include <string>

class ZAN_API ZANEngineException : public InfraException {
public:
    /// An exception with an empty message.
    ZANEngineException();

    /// Copies the message. A null pointer gives an empty message.
    explicit ZANEngineException(char const* message);
    explicit ZANEngineException(std::string const& message);

    ZANEngineException(ZANEngineException const& other);
    ZANEngineException& operator=(ZANEngineException const& other);

    ~ZANEngineException() override;
};

#endif
