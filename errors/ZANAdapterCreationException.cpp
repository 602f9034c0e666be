#include "errors/ZANAdapterCreationException.h"

ZANAdapterCreationException::ZANAdapterCreationException() = default;

ZANAdapterCreationException::ZANAdapterCreationException(std::string const& message)
    : ZANEngineException(message) {}

ZANAdapterCreationException::ZANAdapterCreationException(ZANAdapterCreationException const& other) =
    default;

ZANAdapterCreationException&
ZANAdapterCreationException::operator=(ZANAdapterCreationException const& other) = default;

ZANAdapterCreationException::~ZANAdapterCreationException() = default;
