// A program that trades with QuickFIX alone, with its file store and its file log, so that there is
// something to take over.
//
// plain_initiator <session file> <ClOrdID>...: logs on, sends the orders, waits until all of them
// are filled, and logs out.
#include <atomic>
#include <chrono>
#include <iostream>
#include <string>
#include <thread>

#include <quickfix/FileLog.h>
#include <quickfix/FileStore.h>
#include <quickfix/Session.h>
#include <quickfix/SessionSettings.h>
#include <quickfix/SocketInitiator.h>

namespace {

class Trader : public FIX::NullApplication {
public:
    void onLogon(FIX::SessionID const&) override { isOn = true; }

    void fromApp(FIX::Message const& message, FIX::SessionID const&) noexcept override {
        if (message.isSetField(39) && message.getField(39) == "2")
            ++filled;
    }

    std::atomic<bool> isOn{false};
    std::atomic<int> filled{0};
};

FIX::Message order(std::string const& id) {
    FIX::Message message;
    message.getHeader().setField(FIX::MsgType("D"));
    message.setField(FIX::ClOrdID(id));
    message.setField(FIX::Symbol("IBM"));
    message.setField(FIX::Side('1'));
    message.setField(FIX::OrderQty(100));
    message.setField(FIX::OrdType('2'));
    message.setField(FIX::Price(10));
    message.setField(FIX::TransactTime());
    return message;
}

template <class Test>
bool eventually(Test test) {
    for (int tries = 0; tries < 1000 && !test(); ++tries)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    return test();
}

int run(int count, char** words) {
    FIX::SessionSettings const settings(words[1]);
    Trader trader;
    FIX::FileStoreFactory stores(settings);
    FIX::SessionID const session = *settings.getSessions().begin();
    FIX::FileLogFactory logs(settings.get(session).getString("FileLogPath"));
    FIX::SocketInitiator initiator(trader, stores, settings, logs);
    initiator.start();
    if (!eventually([&] { return trader.isOn.load(); }))
        return 1;
    for (int at = 2; at < count; ++at) {
        FIX::Message message = order(words[at]);
        FIX::Session::sendToTarget(message, session);
    }
    bool const isDone = eventually([&] { return trader.filled == count - 2; });
    initiator.stop();
    return isDone ? 0 : 1;
}

} // namespace

int main(int count, char** words) {
    try {
        return count < 2 ? 2 : run(count, words);
    } catch (std::exception const& failure) {
        std::cerr << failure.what() << std::endl;
        return 1;
    }
}
