/// `WrongConfigurationException`: the application was set up wrongly, for example with a URL whose
/// adapter module cannot be found.
///
/// The message tells what is wrong, where, and what would be right.
///
/// Threads: an exception object belongs to the thread that caught it.
#ifndef ZANENGINE_INFRA_WRONGCONFIGURATIONEXCEPTION_H
#define ZANENGINE_INFRA_WRONGCONFIGURATIONEXCEPTION_H

#include "infra/Export.h"
#include "infra/InfraException.h"

#include <string>

class ZAN_API WrongConfigurationException : public InfraException {
public:
    /// Copies the message.
    explicit WrongConfigurationException(std::string const& message);

    WrongConfigurationException(WrongConfigurationException const& other);
    WrongConfigurationException& operator=(WrongConfigurationException const& other);

    ~WrongConfigurationException() override;
};

#endif
