#include "infra/InfraException.h"

InfraException::InfraException() = default;

InfraException::InfraException(char const* message) : message_(message ? message : "") {}

InfraException::InfraException(std::string const& message) : message_(message) {}

InfraException::InfraException(InfraException const& other) = default;

InfraException& InfraException::operator=(InfraException const& other) = default;

InfraException::~InfraException() = default;

char const* InfraException::what() const noexcept {
    return message_.c_str();
}

std::string const& InfraException::getMessage() const {
    return message_;
}

void InfraException::setMessage(std::string const& message) {
    message_ = message;
}
