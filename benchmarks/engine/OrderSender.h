/// What sends orders to the counterparty: the engine, or QuickFIX alone.
///
/// The header is read by sources of two language levels.
#ifndef ZANENGINE_BENCHMARKS_ENGINE_ORDERSENDER_H
#define ZANENGINE_BENCHMARKS_ENGINE_ORDERSENDER_H

#include <functional>
#include <string>

namespace bench {

class OrderSender {
public:
    OrderSender() = default;
    OrderSender(OrderSender const&) = delete;
    OrderSender& operator=(OrderSender const&) = delete;
    virtual ~OrderSender() = default;

    /// Builds the order of twelve fields with this ClOrdID and sends it. Any thread.
    virtual void send(std::string const& clientOrderId) = 0;
};

/// Called for every report that comes in, on a thread of whoever took it.
using OnReport = std::function<void()>;

} // namespace bench

#endif
