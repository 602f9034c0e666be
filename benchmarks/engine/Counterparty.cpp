// The counterparty of the engine's benchmarks, in a process of its own: QuickFIX's acceptor, which
// keeps what it sends in memory. It takes orders, and answers each with a report when told to.
//
//     zan-bench-counterparty TARGET [--reports]
//
// TARGET is the SenderCompID of the other side. Prints `listening on 127.0.0.1:<port>`, and for
// every order whose ClOrdID begins with `LAST` how many orders came so far: `received <count>
// <id>`. Ends on SIGTERM.
//
// QuickFIX binds its port on every address of the machine; connect over loopback.
#include "benchmarks/Order.h"

#include <csignal>
#include <cstring>
#include <iostream>
#include <string>

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <quickfix/MessageStore.h>
#include <quickfix/Session.h>
#include <quickfix/ThreadedSocketAcceptor.h>

namespace {

class Counterparty : public FIX::Application {
public:
    explicit Counterparty(bool reports) : reports_(reports) {}

    void onCreate(FIX::SessionID const&) override {}
    void onLogon(FIX::SessionID const&) override {}
    void onLogout(FIX::SessionID const&) override {}
    void toAdmin(FIX::Message&, FIX::SessionID const&) override {}
    void toApp(FIX::Message&, FIX::SessionID const&) throw(FIX::DoNotSend) override {}
    void fromAdmin(FIX::Message const&, FIX::SessionID const&) throw(FIX::RejectLogon) override {}
    void fromApp(FIX::Message const& message,
                 FIX::SessionID const& id) throw(FIX::UnsupportedMessageType) override;

private:
    void report(FIX::Message const& order, FIX::SessionID const& id) const;

    bool const reports_;
    long count_ = 0;
};

void Counterparty::fromApp(FIX::Message const& message,
                           FIX::SessionID const& id) throw(FIX::UnsupportedMessageType) {
    ++count_;
    if (reports_)
        report(message, id);
    std::string const& order = message.getField(FIX::FIELD::ClOrdID);
    if (std::strncmp(order.c_str(), "LAST", 4) == 0)
        std::cout << "received " << count_ << ' ' << order << std::endl;
}

void Counterparty::report(FIX::Message const& order, FIX::SessionID const& id) const {
    std::string const number = std::to_string(count_);
    FIX::Message report;
    report.getHeader().setField(FIX::FIELD::MsgType, "8");
    report.setField(FIX::FIELD::OrderID, "O-" + number);
    report.setField(FIX::FIELD::ExecID, "E-" + number);
    report.setField(FIX::FIELD::ExecType, "0");
    report.setField(FIX::FIELD::OrdStatus, "0");
    report.setField(FIX::FIELD::CumQty, "0");
    report.setField(FIX::FIELD::AvgPx, "0");
    for (int const tag : {FIX::FIELD::ClOrdID, FIX::FIELD::Symbol, FIX::FIELD::Side,
                          FIX::FIELD::OrderQty, FIX::FIELD::Price})
        report.setField(tag, order.getField(tag));
    report.setField(FIX::FIELD::LeavesQty, order.getField(FIX::FIELD::OrderQty));
    FIX::Session::sendToTarget(report, id);
}

int freePort() {
    int const probe = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_ANY);
    socklen_t size = sizeof address;
    bind(probe, reinterpret_cast<sockaddr*>(&address), size);
    getsockname(probe, reinterpret_cast<sockaddr*>(&address), &size);
    close(probe);
    return ntohs(address.sin_port);
}

FIX::SessionSettings settingsFor(std::string const& target, int port) {
    FIX::Dictionary keys;
    keys.setString("ConnectionType", "acceptor");
    keys.setString("StartTime", "00:00:00");
    keys.setString("EndTime", "00:00:00");
    keys.setString("UseDataDictionary", "N");
    keys.setString("SocketNodelay", "Y");
    keys.setInt("SocketAcceptPort", port);
    FIX::SessionSettings settings;
    settings.set(FIX::SessionID(order::beginString, "THEM", target), keys);
    return settings;
}

void serve(std::string const& target, bool reports, sigset_t const& ends) {
    Counterparty counterparty(reports);
    int const port = freePort();
    FIX::MemoryStoreFactory stores;
    FIX::ThreadedSocketAcceptor acceptor(counterparty, stores, settingsFor(target, port));
    acceptor.start();
    std::cout << "listening on 127.0.0.1:" << port << std::endl;
    int signal = 0;
    sigwait(&ends, &signal);
    // What it keeps is of no use to anybody, and an orderly stop takes seconds.
    _exit(0);
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::cerr << "usage: zan-bench-counterparty TARGET [--reports]\n";
        return 2;
    }
    sigset_t ends;
    sigemptyset(&ends);
    sigaddset(&ends, SIGTERM);
    sigaddset(&ends, SIGINT);
    pthread_sigmask(SIG_BLOCK, &ends, nullptr);
    try {
        serve(argv[1], argc > 2 && std::string(argv[2]) == "--reports", ends);
    } catch (std::exception const& error) {
        std::cerr << "zan-bench-counterparty: " << error.what() << std::endl;
        return 1;
    }
}
