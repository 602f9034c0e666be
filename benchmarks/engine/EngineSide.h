/// The engine in this process, through the facade, as an application has it: one connection with
/// its message log.
///
/// The facade is one for the process, so there is one `EngineSide` at a time.
#ifndef ZANENGINE_BENCHMARKS_ENGINE_ENGINESIDE_H
#define ZANENGINE_BENCHMARKS_ENGINE_ENGINESIDE_H

#include "adapter/IZANEventListener.h"
#include "benchmarks/engine/OrderSender.h"
#include "engine/ZANEngineProxy.h"
#include "infra/UserTicket.h"
#include "infra/counted_ptr.h"
#include "message/ZANMessage.h"

#include <string>
#include <vector>

namespace bench {

using Messages = std::vector<counted_ptr<ZANMessage>>;

class EngineSide final : public OrderSender {
public:
    static inline UserTicket const ticket;
    static inline std::string const connection = "BENCH";

    /// Logs on to the counterparty on this port of the loopback, with a log in this folder.
    EngineSide(int port, std::string const& folder, std::string const& durability = "normal");
    ~EngineSide() override;

    /// From now on the connection has a direct listener.
    void listen(OnReport const& onReport);

    void send(std::string const& clientOrderId) override;
    void send(Messages const& orders);

    static counted_ptr<ZANMessage> newOrder(std::string const& clientOrderId,
                                            std::string const& symbol = "EURUSD");
    static ZANEngineProxy& engine() { return ZANEngineProxy::getInstance(); }

private:
    counted_ptr<IZANEventListener> listener_;
};

} // namespace bench

#endif
