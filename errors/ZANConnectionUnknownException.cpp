#include "errors/ZANConnectionUnknownException.h"

#include "errors/RemoteExceptionImpl.h"

ZAN_DEFINE_REMOTE_EXCEPTION(ZANConnectionUnknownException,
                            "kestrow.moravane.engine.ZANConnectionUnknownException")
