#include "errors/ZANInvalidLogonException.h"

#include "errors/RemoteExceptionImpl.h"

ZAN_DEFINE_REMOTE_EXCEPTION(ZANInvalidLogonException,
                            "kestrow.moravane.message.ZANInvalidLogonException")
