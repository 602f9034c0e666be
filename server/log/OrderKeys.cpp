#include "server/log/OrderKeys.h"

#include "server/wire/FieldText.h"

#include <algorithm>

namespace zan::server {

namespace {

constexpr int clientOrderId = 11;
constexpr int orderId = 37;
constexpr int originalClientOrderId = 41;

// What counterparties write where there is no order of theirs yet.
constexpr std::string_view noOrder = "NONE";

bool namesOrder(WireField const& field) {
    switch (field.tag) {
    case clientOrderId:
    case originalClientOrderId:
        return !field.value.empty();
    case orderId:
        return !field.value.empty() && field.value != noOrder;
    default:
        return false;
    }
}

std::string keyOf(WireField const& field) {
    return (field.tag == orderId ? "O" : "C") + std::string(field.value);
}

} // namespace

std::string clientOrderKey(std::string_view id) {
    return "C" + std::string(id);
}

std::vector<OrderKeys> ordersOf(std::string_view message) {
    std::vector<OrderKeys> orders;
    std::vector<int> tags;
    FieldCursor cursor(message, fieldSeparator, Reading::Tolerant);
    while (cursor.next()) {
        WireField const& field = cursor.field();
        if (!namesOrder(field)) {
            continue;
        }
        if (orders.empty() || std::ranges::find(tags, field.tag) != tags.end()) {
            orders.emplace_back();
            tags.clear();
        }
        tags.push_back(field.tag);
        orders.back().push_back(keyOf(field));
    }
    return orders;
}

} // namespace zan::server
