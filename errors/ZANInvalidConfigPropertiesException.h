/// `ZANInvalidConfigPropertiesException`: a property or a name in a request is none that the
/// library knows, such as the event type of a subscription.
///
/// Threads: an exception object belongs to the thread that caught it; it takes no locks.
#ifndef ZANENGINE_ERRORS_ZANINVALIDCONFIGPROPERTIESEXCEPTION_H
#define ZANENGINE_ERRORS_ZANINVALIDCONFIGPROPERTIESEXCEPTION_H

#include "errors/ZANEngineException.h"
#include "infra/Export.h"

#include <string>

class ZAN_API ZANInvalidConfigPropertiesException : public ZANEngineException {
public:
    /// An exception with an empty message.
    ZANInvalidConfigPropertiesException();

    /// Copies the message.
    explicit ZANInvalidConfigPropertiesException(std::string const& message);

    ZANInvalidConfigPropertiesException(ZANInvalidConfigPropertiesException const& other);
    ZANInvalidConfigPropertiesException&
    operator=(ZANInvalidConfigPropertiesException const& other);

    ~ZANInvalidConfigPropertiesException() override;
};

#endif
