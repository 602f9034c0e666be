#include "errors/ZANEngineRemoteException.h"

ZANEngineRemoteException::ZANEngineRemoteException() = default;

ZANEngineRemoteException::ZANEngineRemoteException(std::string const& message)
    : ZANEngineException(message) {}

ZANEngineRemoteException::ZANEngineRemoteException(ZANEngineRemoteException const& other) = default;

ZANEngineRemoteException&
ZANEngineRemoteException::operator=(ZANEngineRemoteException const& other) = default;

ZANEngineRemoteException::~ZANEngineRemoteException() = default;

std::string const& ZANEngineRemoteException::getType() const {
    // The odd spelling is meant: engines and applications compare this text.
    static std::string const type = "Undefinded";
    return type;
}
