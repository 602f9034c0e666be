/// `ZANPersistentStorageException`: the engine could not read or write its message log.
///
/// Its remote type name carries no class prefix: the engine keeps this error among its utilities.
///
/// Threads: an exception object belongs to the thread that caught it; it takes no locks.
#ifndef ZANENGINE_ERRORS_ZANPERSISTENTSTORAGEEXCEPTION_H
#define ZANENGINE_ERRORS_ZANPERSISTENTSTORAGEEXCEPTION_H

#include "errors/ZANEngineRemoteException.h"
#include "infra/Export.h"

#include <string>

class ZAN_API ZANPersistentStorageException : public ZANEngineRemoteException {
public:
    /// An exception with an empty message.
    ZANPersistentStorageException();

    /// Copies the message.
    explicit ZANPersistentStorageException(std::string const& message);

    ZANPersistentStorageException(ZANPersistentStorageException const& other);
    ZANPersistentStorageException& operator=(ZANPersistentStorageException const& other);

    ~ZANPersistentStorageException() override;

    /// "kestrow.util.PersistentStorageException".
    std::string const& getType() const override;

    /// Throws a `ZANPersistentStorageException` with the given message.
    void throwInstance(std::string const& message) override;
};

#endif
