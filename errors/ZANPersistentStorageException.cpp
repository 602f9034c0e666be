#include "errors/ZANPersistentStorageException.h"

#include "errors/RemoteExceptionImpl.h"

ZAN_DEFINE_REMOTE_EXCEPTION(ZANPersistentStorageException,
                            "kestrow.util.PersistentStorageException")
