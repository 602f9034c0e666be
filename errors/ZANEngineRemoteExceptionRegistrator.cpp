#include "errors/ZANEngineRemoteExceptionRegistrator.h"

#include "errors/ZANUtilityFunctions.h"

ZANEngineRemoteExceptionRegistrator::ZANEngineRemoteExceptionRegistrator(
    counted_ptr<ZANEngineRemoteException> prototype) {
    if (prototype) {
        ZANUtilityFunctions::registerRemoteException(prototype);
    }
}

ZANEngineRemoteExceptionRegistrator::ZANEngineRemoteExceptionRegistrator(
    ZANEngineRemoteExceptionRegistrator const& other) = default;

ZANEngineRemoteExceptionRegistrator& ZANEngineRemoteExceptionRegistrator::operator=(
    ZANEngineRemoteExceptionRegistrator const& other) = default;

ZANEngineRemoteExceptionRegistrator::~ZANEngineRemoteExceptionRegistrator() = default;
