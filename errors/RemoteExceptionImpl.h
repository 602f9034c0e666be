/// Defines the members of a concrete remote exception class, which differ in two names only. Used
/// once in the source file of each such class, so that its key function stands there.
#ifndef ZANENGINE_ERRORS_REMOTEEXCEPTIONIMPL_H
#define ZANENGINE_ERRORS_REMOTEEXCEPTIONIMPL_H

#include "errors/ZANEngineRemoteException.h"

#include <string>

#define ZAN_DEFINE_REMOTE_EXCEPTION(Class, remoteTypeName)                                         \
    Class::Class() = default;                                                                      \
    Class::Class(std::string const& message) : ZANEngineRemoteException(message) {}                \
    Class::Class(Class const& other) = default;                                                    \
    Class& Class::operator=(Class const& other) = default;                                         \
    Class::~Class() = default;                                                                     \
    std::string const& Class::getType() const {                                                    \
        static std::string const type = remoteTypeName;                                            \
        return type;                                                                               \
    }                                                                                              \
    void Class::throwInstance(std::string const& message) {                                        \
        throw Class(message);                                                                      \
    }

#endif
