#include "errors/ZANSecurityException.h"

#include "errors/RemoteExceptionImpl.h"

ZAN_DEFINE_REMOTE_EXCEPTION(ZANSecurityException, "java.lang.SecurityException")
