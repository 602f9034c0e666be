#include "server/counterparty/OrderDesk.h"

#include "server/sessions/FixScanner.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <set>
#include <string_view>

namespace zan::server {

namespace {

// Orders that are remembered; an older one is then unknown.
constexpr std::size_t mostOrders = 100'000;
constexpr Decimal marketPrice = 100 * decimalOne;

constexpr int clOrdId = 11, cumQty = 14, execId = 17, execTransType = 20, lastPx = 31, lastQty = 32,
              msgSeqNum = 34, msgType = 35, orderId = 37, orderQty = 38, ordStatus = 39,
              ordType = 40, origClOrdId = 41, price = 44, refSeqNum = 45, side = 54, symbol = 55,
              text = 58, transactTime = 60, avgPx = 6, cxlRejReason = 102, ordRejReason = 103,
              execType = 150, leavesQty = 151, refMsgType = 372, businessRejectReason = 380,
              cxlRejResponseTo = 434;

// What a report repeats of its order; the members of the groups stand in it beside their counts
// (NoPartyIDs with its nested NoPartySubIDs, NoSecurityAltID).
bool isRepeated(int tag) {
    static std::set<int> const repeated = {1,   15,  18,  22,  38,  40,  44,  47,  48,  54,  55,
                                           59,  65,  99,  106, 107, 126, 167, 200, 201, 202, 205,
                                           206, 207, 432, 447, 448, 452, 453, 454, 455, 456, 460,
                                           461, 523, 526, 528, 529, 541, 581, 583, 660, 802, 803};
    return repeated.count(tag) != 0;
}

std::string now() {
    using namespace std::chrono;
    auto const millis = duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
    std::time_t const seconds = static_cast<std::time_t>(millis / 1000);
    std::tm parts{};
    gmtime_r(&seconds, &parts);
    std::array<char, 32> buffer{};
    std::size_t const length =
        std::strftime(buffer.data(), buffer.size(), "%Y%m%d-%H:%M:%S", &parts);
    std::snprintf(buffer.data() + length, buffer.size() - length, ".%03d",
                  static_cast<int>(millis % 1000));
    return buffer.data();
}

constexpr std::string_view orderIdBegins = "O-";
constexpr std::string_view execIdBegins = "E-";

// The number of an id that begins so; 0 for any other.
long long numberIn(std::string const& id, std::string_view begins) {
    long long number = 0;
    if (id.compare(0, begins.size(), begins) == 0)
        std::from_chars(id.data() + begins.size(), id.data() + id.size(), number);
    return number;
}

} // namespace

struct OrderDesk::Request {
    explicit Request(std::string const& message) {
        FixScanner scanner(message);
        while (scanner.nextGood())
            fields.push_back({scanner.tag(), scanner.value()});
    }

    std::string value(int tag) const {
        auto const found = std::find_if(fields.begin(), fields.end(),
                                        [tag](FixField const& field) { return field.tag == tag; });
        return found == fields.end() ? std::string() : found->value;
    }

    FixFields repeated() const {
        FixFields result;
        std::copy_if(fields.begin(), fields.end(), std::back_inserter(result),
                     [](FixField const& field) { return isRepeated(field.tag); });
        return result;
    }

    FixFields fields;
};

struct OrderDesk::Order {
    std::string id;
    std::string clientOrderId;
    std::string originalId;
    FixFields repeated;
    Decimal quantity = 0;
    Decimal price = 0;
    Decimal filled = 0;
    char status = '0';

    bool isOpen() const { return status == '0' || status == '1'; }
    Decimal left() const { return isOpen() ? quantity - filled : 0; }
};

OrderDesk::OrderDesk(std::string const& beginString) : fix42_(beginString < "FIX.4.3") {}

void OrderDesk::goOnBehind(std::string const& report) {
    Request const sent(report);
    lastOrder_ = std::max(lastOrder_, numberIn(sent.value(orderId), orderIdBegins));
    lastExecution_ = std::max(lastExecution_, numberIn(sent.value(execId), execIdBegins));
}

std::vector<DeskReply> OrderDesk::handle(std::string const& message) {
    Request const request(message);
    std::string const type = request.value(msgType);
    if (type == "D")
        return placeOrder(request);
    if (type == "F")
        return {cancelOrder(request)};
    // A business reject is not answered: two sides that do would never end.
    if (type == "j")
        return {};
    return {rejectMessage(request)};
}

std::vector<DeskReply> OrderDesk::placeOrder(Request const& request) {
    std::string const wrong = whatIsWrong(request);
    if (!wrong.empty())
        return {rejectOrder(request, wrong)};
    auto const order = std::make_shared<Order>();
    order->id = std::string(orderIdBegins) + std::to_string(++lastOrder_);
    order->clientOrderId = request.value(clOrdId);
    order->repeated = request.repeated();
    order->quantity = *parseDecimal(request.value(orderQty));
    order->price = parseDecimal(request.value(price)).value_or(marketPrice);
    remember(order->clientOrderId, order);
    std::vector<DeskReply> replies{report(*order, '0', {})};
    if (order->price >= decimalOne)
        fill(order, replies);
    return replies;
}

std::string OrderDesk::whatIsWrong(Request const& request) const {
    static constexpr std::array<std::pair<int, char const*>, 5> required = {
        {{clOrdId, "ClOrdID (11)"},
         {symbol, "Symbol (55)"},
         {side, "Side (54)"},
         {orderQty, "OrderQty (38)"},
         {ordType, "OrdType (40)"}}};
    for (auto const& [tag, name] : required)
        if (request.value(tag).empty())
            return std::string(name) + " is missing";
    if (orders_.count(request.value(clOrdId)) != 0)
        return "ClOrdID (11) " + request.value(clOrdId) + " was used before";
    if (parseDecimal(request.value(orderQty)).value_or(0) <= 0)
        return "OrderQty (38) " + request.value(orderQty) + " is no quantity above 0";
    std::string const limit = request.value(price);
    if (limit.empty() && request.value(ordType) == "2")
        return "Price (44) is missing in a limit order";
    if (!limit.empty() && parseDecimal(limit).value_or(0) <= 0)
        return "Price (44) " + limit + " is no price above 0";
    return {};
}

void OrderDesk::fill(OrderPointer const& order, std::vector<DeskReply>& replies) {
    Decimal const half = order->quantity / 2 / decimalOne * decimalOne;
    for (Decimal const part : {half, order->quantity - half}) {
        if (part == 0)
            continue;
        order->filled += part;
        order->status = order->filled == order->quantity ? '2' : '1';
        replies.push_back(
            report(*order, fix42_ ? order->status : 'F',
                   {{lastQty, decimalText(part)}, {lastPx, decimalText(order->price)}}));
    }
}

DeskReply OrderDesk::cancelOrder(Request const& request) {
    auto const found = orders_.find(request.value(origClOrdId));
    if (found == orders_.end())
        return rejectCancel(request, nullptr,
                            "the order " + request.value(origClOrdId) + " is not known");
    OrderPointer const order = found->second;
    if (!order->isOpen())
        return rejectCancel(request, order, "nothing is left of the order to be cancelled");
    order->originalId = order->clientOrderId;
    order->clientOrderId = request.value(clOrdId);
    order->status = '4';
    remember(order->clientOrderId, order);
    return report(*order, '4', {});
}

DeskReply OrderDesk::report(Order const& order, char type, FixFields const& more) {
    FixFields body = {{orderId, order.id}, {clOrdId, order.clientOrderId}};
    if (!order.originalId.empty())
        body.push_back({origClOrdId, order.originalId});
    body.push_back({execId, std::string(execIdBegins) + std::to_string(++lastExecution_)});
    if (fix42_)
        body.push_back({execTransType, "0"});
    body.push_back({execType, std::string(1, type)});
    body.push_back({ordStatus, std::string(1, order.status)});
    body.insert(body.end(), order.repeated.begin(), order.repeated.end());
    body.insert(body.end(), more.begin(), more.end());
    body.push_back({leavesQty, decimalText(order.left())});
    body.push_back({cumQty, decimalText(order.filled)});
    body.push_back({avgPx, order.filled == 0 ? "0" : decimalText(order.price)});
    body.push_back({transactTime, now()});
    return {"8", body};
}

DeskReply OrderDesk::rejectOrder(Request const& request, std::string const& reason) {
    Order order;
    order.id = "NONE";
    order.clientOrderId = request.value(clOrdId).empty() ? "NONE" : request.value(clOrdId);
    order.repeated = request.repeated();
    order.status = '8';
    return report(order, '8', {{ordRejReason, fix42_ ? "0" : "99"}, {text, reason}});
}

DeskReply OrderDesk::rejectCancel(Request const& request, OrderPointer const& order,
                                  std::string const& reason) {
    auto const orNone = [](std::string const& value) { return value.empty() ? "NONE" : value; };
    return {"9",
            {{orderId, order ? order->id : "NONE"},
             {clOrdId, orNone(request.value(clOrdId))},
             {origClOrdId, orNone(request.value(origClOrdId))},
             {ordStatus, order ? std::string(1, order->status) : "8"},
             {cxlRejResponseTo, "1"},
             {cxlRejReason, order ? "0" : "1"},
             {text, reason},
             {transactTime, now()}}};
}

DeskReply OrderDesk::rejectMessage(Request const& request) {
    return {"j",
            {{refSeqNum, request.value(msgSeqNum)},
             {refMsgType, request.value(msgType)},
             {businessRejectReason, "3"},
             {text, "this counterparty takes orders (D) and cancels (F)"}}};
}

void OrderDesk::remember(std::string const& clientOrderId, OrderPointer const& order) {
    orders_[clientOrderId] = order;
    oldestFirst_.push_back(clientOrderId);
    if (oldestFirst_.size() > mostOrders) {
        orders_.erase(oldestFirst_.front());
        oldestFirst_.pop_front();
    }
}

} // namespace zan::server
