#include "transports/embedded/DemoCounterparty.h"

namespace zan::embedded {

DemoCounterparty::DemoCounterparty() : counterparty_(server::CounterpartySettings{}) {}

std::vector<server::ConnectionSettings> DemoCounterparty::connections() const {
    server::CounterpartySettings const names;
    return server::parseSessionText(
        "[SESSION]\n"
        "ConnectionName=DEMO\n"
        "ConnectionType=initiator\n"
        "BeginString=" +
            names.beginString + "\nSenderCompID=" + names.target +
            "\nTargetCompID=" + names.sender +
            "\nStartTime=00:00:00\n"
            "EndTime=00:00:00\n"
            "HeartBtInt=10\n"
            "ReconnectInterval=1\n"
            "SocketNodelay=Y\n"
            "SocketConnectHost=" +
            names.address + "\nSocketConnectPort=" + std::to_string(counterparty_.port()) + "\n",
        "embedded:demo");
}

} // namespace zan::embedded
