#include "errors/ZANConnectionUnavailableException.h"

#include "errors/RemoteExceptionImpl.h"

ZAN_DEFINE_REMOTE_EXCEPTION(ZANConnectionUnavailableException,
                            "kestrow.moravane.engine.ZANConnectionUnavailableException")
