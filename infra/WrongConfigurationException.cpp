#include "infra/WrongConfigurationException.h"

WrongConfigurationException::WrongConfigurationException(std::string const& message)
    : InfraException(message) {}

WrongConfigurationException::WrongConfigurationException(WrongConfigurationException const& other) =
    default;

WrongConfigurationException&
WrongConfigurationException::operator=(WrongConfigurationException const& other) = default;

WrongConfigurationException::~WrongConfigurationException() = default;
