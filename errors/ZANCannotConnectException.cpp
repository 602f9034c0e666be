#include "errors/ZANCannotConnectException.h"

ZANCannotConnectException::ZANCannotConnectException() = default;

ZANCannotConnectException::ZANCannotConnectException(std::string const& message)
    : ZANEngineException(message) {}

ZANCannotConnectException::ZANCannotConnectException(ZANCannotConnectException const& other) =
    default;

ZANCannotConnectException&
ZANCannotConnectException::operator=(ZANCannotConnectException const& other) = default;

ZANCannotConnectException::~ZANCannotConnectException() = default;
