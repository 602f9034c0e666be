/// `UserTicket`: who calls. Nearly every engine operation takes one first and hands it to the
/// adapter, which alone looks inside.
///
/// There is deliberately no way to write a ticket to a stream: a secret never reaches a log by
/// accident.
///
/// Threads: a value; one object belongs to one thread at a time, copies are independent.
#ifndef ZANENGINE_INFRA_USERTICKET_H
#define ZANENGINE_INFRA_USERTICKET_H

#include "infra/Export.h"

#include <string>

class ZAN_API UserTicket {
public:
    /// A ticket of nobody: user and secret are empty.
    UserTicket();

    /// Copies both texts; they are taken as they are, without a check.
    UserTicket(std::string const& user, std::string const& secret);

    /// The references are good for as long as the ticket lives and is not assigned to.
    std::string const& getUser() const;
    std::string const& getSecret() const;

private:
    std::string user_;
    std::string secret_;
};

#endif
