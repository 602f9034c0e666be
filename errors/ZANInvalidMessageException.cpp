#include "errors/ZANInvalidMessageException.h"

#include "errors/RemoteExceptionImpl.h"

ZAN_DEFINE_REMOTE_EXCEPTION(ZANInvalidMessageException,
                            "kestrow.moravane.message.ZANInvalidMessageException")
