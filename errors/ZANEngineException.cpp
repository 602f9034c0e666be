#include "errors/ZANEngineException.h"

ZANEngineException::ZANEngineException() = default;

ZANEngineException::ZANEngineException(char const* message) : InfraException(message) {}

ZANEngineException::ZANEngineException(std::string const& message) : InfraException(message) {}

ZANEngineException::ZANEngineException(ZANEngineException const& other) = default;

ZANEngineException& ZANEngineException::operator=(ZANEngineException const& other) = default;

ZANEngineException::~ZANEngineException() = default;
