/// `ZANAdapterCreationException`: the facade asked for an adapter and got an empty one, from the
/// application's factory or from a module's creation function.
///
/// Threads: an exception object belongs to the thread that caught it; it takes no locks.
#ifndef ZANENGINE_ERRORS_ZANADAPTERCREATIONEXCEPTION_H
#define ZANENGINE_ERRORS_ZANADAPTERCREATIONEXCEPTION_H

#include "errors/ZANEngineException.h"
#include "infra/Export.h"

#include <string>

class ZAN_API ZANAdapterCreationException : public ZANEngineException {
public:
    /// An exception with an empty message.
    ZANAdapterCreationException();

    /// Copies the message.
    explicit ZANAdapterCreationException(std::string const& message);

    ZANAdapterCreationException(ZANAdapterCreationException const& other);
    ZANAdapterCreationException& operator=(ZANAdapterCreationException const& other);

    ~ZANAdapterCreationException() override;
};

#endif
