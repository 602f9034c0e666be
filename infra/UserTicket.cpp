#include "infra/UserTicket.h"

UserTicket::UserTicket() = default;

UserTicket::UserTicket(std::string const& user, std::string const& secret)
    : user_(user), secret_(secret) {}

std::string const& UserTicket::getUser() const {
    return user_;
}

std::string const& UserTicket::getSecret() const {
    return secret_;
}
