/// `InfraException`: the root of every exception that this library and its adapters throw.
///
/// It holds one text, the message. Whoever catches it by this type catches the whole family.
///
/// Threads: an exception object belongs to the thread that caught it; it takes no locks.
#ifndef ZANENGINE_INFRA_INFRAEXCEPTION_H
#define ZANENGINE_INFRA_INFRAEXCEPTION_H

#include "infra/Export.h"

#include <exception>
#include <string>

class ZAN_API InfraException : public std::exception {
public:
    /// An exception with an empty message.
    InfraException();

    /// Copies the message. A null pointer gives an empty message.
    explicit InfraException(char const* message);
    explicit InfraException(std::string const& message);

    /// Copies carry the same message. Only want of memory can make a copy fail.
    InfraException(InfraException const& other);
    InfraException& operator=(InfraException const& other);

    ~InfraException() override;

    /// The message, as characters that end in zero. They live as long as this object is neither
    /// assigned to nor destroyed.
    char const* what() const noexcept override;

    /// The message, byte for byte as it was given. The reference is good for as long as this object
    /// lives; an assignment to the object changes the text behind it.
    virtual std::string const& getMessage() const;

protected:
    /// Replaces the message, for a derived class that completes its text after construction.
    virtual void setMessage(std::string const& message);

private:
    std::string message_;
};

#endif
