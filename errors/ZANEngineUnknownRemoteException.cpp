#include "errors/ZANEngineUnknownRemoteException.h"

#include "errors/RemoteExceptionImpl.h"

ZAN_DEFINE_REMOTE_EXCEPTION(ZANEngineUnknownRemoteException, "ZANEngineUnknownRemoteException")
