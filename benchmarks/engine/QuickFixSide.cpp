#include "benchmarks/engine/QuickFixSide.h"

#include "benchmarks/Order.h"

#include <chrono>
#include <stdexcept>
#include <thread>

#include <quickfix/FileStore.h>
#include <quickfix/Session.h>
#include <quickfix/SocketInitiator.h>
#include <quickfix/ThreadedSocketInitiator.h>

namespace bench {

namespace {

class Reports : public FIX::Application {
public:
    explicit Reports(OnReport const& onReport) : onReport_(onReport) {}

    void onCreate(FIX::SessionID const&) override {}
    void onLogon(FIX::SessionID const&) override {}
    void onLogout(FIX::SessionID const&) override {}
    void toAdmin(FIX::Message&, FIX::SessionID const&) override {}
    void toApp(FIX::Message&, FIX::SessionID const&) throw(FIX::DoNotSend) override {}
    void fromAdmin(FIX::Message const&, FIX::SessionID const&) throw(FIX::RejectLogon) override {}
    void fromApp(FIX::Message const&,
                 FIX::SessionID const&) throw(FIX::UnsupportedMessageType) override {
        if (onReport_)
            onReport_();
    }

private:
    OnReport const onReport_;
};

FIX::SessionSettings settingsFor(FIX::SessionID const& id, int port) {
    FIX::Dictionary keys;
    keys.setString("ConnectionType", "initiator");
    keys.setString("StartTime", "00:00:00");
    keys.setString("EndTime", "00:00:00");
    keys.setString("UseDataDictionary", "N");
    keys.setString("SocketNodelay", "Y");
    keys.setString("SocketConnectHost", "127.0.0.1");
    keys.setInt("SocketConnectPort", port);
    keys.setInt("HeartBtInt", 30);
    keys.setInt("ReconnectInterval", 1);
    FIX::SessionSettings settings;
    settings.set(id, keys);
    return settings;
}

// Texts as string objects, made once: an application has them in hand when it builds a message.
struct ReadyOrder {
    std::string msgType = order::msgType;
    std::string texts[order::bodyFields];

    ReadyOrder() {
        for (int i = 0; i < order::bodyFields; ++i)
            texts[i] = order::body[i].text;
    }
};

} // namespace

class QuickFixSide::Impl {
public:
    Impl(Initiator initiator, std::string const& sender, int port, std::string const& folder,
         OnReport const& onReport)
        : id_(order::beginString, sender, "THEM"), reports_(onReport), stores_(folder) {
        FIX::SessionSettings const settings = settingsFor(id_, port);
        if (initiator == Initiator::plain)
            initiator_.reset(new FIX::SocketInitiator(reports_, stores_, settings));
        else
            initiator_.reset(new FIX::ThreadedSocketInitiator(reports_, stores_, settings));
        initiator_->start();
        waitForLogon();
    }
    ~Impl() { initiator_->stop(); }

    void send(std::string const& clientOrderId) {
        FIX::Message message;
        message.getHeader().setField(order::msgTypeTag, ready_.msgType);
        for (int i = 0; i < order::bodyFields; ++i) {
            int const tag = order::body[i].tag;
            message.setField(tag, tag == FIX::FIELD::ClOrdID ? clientOrderId : ready_.texts[i]);
        }
        if (!FIX::Session::sendToTarget(message, id_))
            throw std::runtime_error("QuickFIX does not take an order");
    }

private:
    void waitForLogon() const {
        FIX::Session* const session = initiator_->getSession(id_);
        auto const deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
        while (!session->isLoggedOn()) {
            if (std::chrono::steady_clock::now() > deadline)
                throw std::runtime_error("QuickFIX is not logged on after ten seconds");
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
    }

    FIX::SessionID const id_;
    ReadyOrder const ready_;
    Reports reports_;
    FIX::FileStoreFactory stores_;
    std::unique_ptr<FIX::Initiator> initiator_;
};

QuickFixSide::QuickFixSide(Initiator initiator, std::string const& sender, int port,
                           std::string const& folder, OnReport const& onReport)
    : impl_(new Impl(initiator, sender, port, folder, onReport)) {}

QuickFixSide::~QuickFixSide() = default;

void QuickFixSide::send(std::string const& clientOrderId) {
    impl_->send(clientOrderId);
}

} // namespace bench
