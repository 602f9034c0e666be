#include "errors/ZANNotConnectedException.h"

#include "errors/RemoteExceptionImpl.h"

ZAN_DEFINE_REMOTE_EXCEPTION(ZANNotConnectedException,
                            "kestrow.moravane.engine.ZANNotConnectedException")
