/// `ZANCannotConnectException`: a connection could not be opened. The message gives the reason,
/// such as a refused link, a time that ran out, or the counterparty's own words.
///
/// Adapters throw it; the library itself never does.
///
/// Threads: an exception object belongs to the thread that caught it; it takes no locks.
#ifndef ZANENGINE_ERRORS_ZANCANNOTCONNECTEXCEPTION_H
#define ZANENGINE_ERRORS_ZANCANNOTCONNECTEXCEPTION_H

#include "errors/ZANEngineException.h"
#include "infra/Export.h"

#include <string>

class ZAN_API ZANCannotConnectException : public ZANEngineException {
public:
    /// An exception with an empty message.
    ZANCannotConnectException();

    /// Copies the message.
    explicit ZANCannotConnectException(std::string const& message);

    ZANCannotConnectException(ZANCannotConnectException const& other);
    ZANCannotConnectException& operator=(ZANCannotConnectException const& other);

    ~ZANCannotConnectException() override;
};

#endif
