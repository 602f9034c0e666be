/// The trading side of a counterparty: takes orders and cancels, says what to answer.
///
/// An order is acknowledged and filled at its price in two parts; a quantity that has no two whole
/// parts is filled in one. An order with a price below 1 rests until it is cancelled. Knows nothing
/// of sessions. One thread at a time.
#ifndef ZANENGINE_SERVER_COUNTERPARTY_ORDERDESK_H
#define ZANENGINE_SERVER_COUNTERPARTY_ORDERDESK_H

#include "server/counterparty/Decimal.h"
#include "server/sessions/FixMessage.h"

#include <deque>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace zan::server {

/// A message to send: its type and its body.
struct DeskReply {
    std::string type;
    FixFields body;
};

class OrderDesk {
public:
    /// `beginString` decides between the execution types of FIX 4.2 and of later versions.
    explicit OrderDesk(std::string const& beginString);

    /// Lets the ids of orders and executions go on behind those of a report that an earlier desk
    /// has sent, so that none is given twice.
    void goOnBehind(std::string const& report);

    /// Answers an application message: orders (D) and cancels (F) with reports and rejects, other
    /// types with a business reject. An order that makes no sense is answered by a report with
    /// OrdStatus 8 and the reason in the Text.
    std::vector<DeskReply> handle(std::string const& message);

private:
    struct Order;
    struct Request;
    using OrderPointer = std::shared_ptr<Order>;

    std::vector<DeskReply> placeOrder(Request const& request);
    DeskReply cancelOrder(Request const& request);
    DeskReply rejectOrder(Request const& request, std::string const& reason);
    DeskReply rejectCancel(Request const& request, OrderPointer const& order,
                           std::string const& reason);
    DeskReply rejectMessage(Request const& request);
    void fill(OrderPointer const& order, std::vector<DeskReply>& replies);
    DeskReply report(Order const& order, char execType, FixFields const& more);
    std::string whatIsWrong(Request const& request) const;
    void remember(std::string const& clientOrderId, OrderPointer const& order);

    bool const fix42_;
    long long lastOrder_ = 0;
    long long lastExecution_ = 0;
    std::map<std::string, OrderPointer> orders_;
    std::deque<std::string> oldestFirst_;
};

} // namespace zan::server

#endif
