/// Which orders a message speaks of.
///
/// Threads: functions without state.
#ifndef ZANENGINE_SERVER_LOG_ORDERKEYS_H
#define ZANENGINE_SERVER_LOG_ORDERKEYS_H

#include <string>
#include <string_view>
#include <vector>

namespace zan::server {

/// The names that one order has in one message: `C` and a client order id (11, 41), or `O` and the
/// id that the counterparty gave it (37).
using OrderKeys = std::vector<std::string>;

std::string clientOrderKey(std::string_view clientOrderId);

/// One entry for each order that the message names. In a message of many orders, such as a list,
/// the next order begins where one of the tags comes again.
std::vector<OrderKeys> ordersOf(std::string_view message);

} // namespace zan::server

#endif
