#include "benchmarks/engine/EngineSide.h"

#include "benchmarks/Order.h"
#include "infra/Url.h"
#include "message/ZANFieldGroup.h"

#include <fstream>
#include <utility>

namespace bench {

namespace {

constexpr int clientOrderIdTag = 11;
constexpr int symbolTag = 55;

// The listener hears of the orders that go out, too.
class ReportListener final : public IZANEventListener {
public:
    explicit ReportListener(OnReport onReport) : onReport_(std::move(onReport)) {}

    void processEvent(counted_ptr<ZANEvent> event) override {
        auto const type = event->getMessage()->getFieldGroup()->getField(order::msgTypeTag);
        if (type->getValue().asStringView() == "8") {
            onReport_();
        }
    }

private:
    OnReport const onReport_;
};

std::string sessionText(int port, std::string const& durability) {
    return "[SESSION]\nConnectionName=" + EngineSide::connection +
           "\nConnectionType=initiator\nBeginString=" + order::beginString +
           "\nSenderCompID=ENGINE\nTargetCompID=THEM\nStartTime=00:00:00\nEndTime=00:00:00\n"
           "HeartBtInt=30\nReconnectInterval=1\nLogonTimeout=10\nSocketNodelay=Y\n"
           "SocketConnectHost=127.0.0.1\nSocketConnectPort=" +
           std::to_string(port) + "\nDurability=" + durability + "\n";
}

// Texts as string objects, made once: an application has them in hand when it builds a message.
struct ReadyOrder {
    std::string msgType = order::msgType;
    std::string texts[order::bodyFields];

    ReadyOrder() {
        for (int i = 0; i < order::bodyFields; ++i) {
            texts[i] = order::body[i].text;
        }
    }
};

std::string const& valueFor(int i, std::string const& clientOrderId, std::string const& symbol) {
    static ReadyOrder const ready;
    switch (order::body[i].tag) {
    case clientOrderIdTag:
        return clientOrderId;
    case symbolTag:
        return symbol;
    default:
        return ready.texts[i];
    }
}

} // namespace

EngineSide::EngineSide(int port, std::string const& folder, std::string const& durability) {
    std::string const file = folder + "/sessions.cfg";
    std::ofstream(file) << sessionText(port, durability);
    ZANEngineProxy::initialize(Url("embedded:" + file + "?data=" + folder + "/data"));
    engine().connect(ticket, connection);
}

EngineSide::~EngineSide() {
    ZANEngineProxy::uninitialize();
}

void EngineSide::listen(OnReport const& onReport) {
    listener_ = counted_ptr<IZANEventListener>(new ReportListener(onReport));
    engine().subscribeDirect(ticket, connection, false, true, false, listener_);
}

void EngineSide::send(std::string const& clientOrderId) {
    engine().sendMessage(ticket, connection, newOrder(clientOrderId));
}

void EngineSide::send(Messages const& orders) {
    engine().sendMultipleMessages(ticket, connection, orders);
}

counted_ptr<ZANMessage> EngineSide::newOrder(std::string const& clientOrderId,
                                             std::string const& symbol) {
    static std::string const type = order::msgType;
    static std::string const version = order::beginString;
    counted_ptr<ZANFieldGroup> fields(new ZANFieldGroup(type, version));
    for (int i = 0; i < order::bodyFields; ++i) {
        fields->setFieldValue(order::body[i].tag, valueFor(i, clientOrderId, symbol));
    }
    return counted_ptr<ZANMessage>(new ZANMessage(std::move(fields)));
}

} // namespace bench
