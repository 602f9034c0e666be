#include "errors/ZANInvalidConfigPropertiesException.h"

ZANInvalidConfigPropertiesException::ZANInvalidConfigPropertiesException() = default;

ZANInvalidConfigPropertiesException::ZANInvalidConfigPropertiesException(std::string const& message)
    : ZANEngineException(message) {}

ZANInvalidConfigPropertiesException::ZANInvalidConfigPropertiesException(
    ZANInvalidConfigPropertiesException const& other) = default;

ZANInvalidConfigPropertiesException& ZANInvalidConfigPropertiesException::operator=(
    ZANInvalidConfigPropertiesException const& other) = default;

ZANInvalidConfigPropertiesException::~ZANInvalidConfigPropertiesException() = default;
