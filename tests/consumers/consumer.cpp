// An application outside the tree, built against the installed package: sends one message through
// the echo adapter and waits for it to come back.
#include "zanengine.h"

#include <chrono>
#include <future>
#include <iostream>

namespace {

class Receiver : public IZANEventListener {
public:
    explicit Receiver(std::promise<std::string>& answer) : answer_(answer) {}

    void processEvent(counted_ptr<ZANEvent> event) override {
        answer_.set_value(
            event->getMessage()->getFieldGroup()->getField(58)->getValue().asString());
    }

private:
    std::promise<std::string>& answer_;
};

std::string sendAndWait(ZANEngineProxy& engine) {
    UserTicket const ticket("consumer", "");
    std::promise<std::string> answer;
    counted_ptr<IZANEventListener> listener(new Receiver(answer));
    engine.subscribe(ticket, listener, "ECHO", ZANEngineDefs::APP_EVENT_TYPE);
    engine.connect(ticket, "ECHO");
    engine.sendMessage(ticket, "ECHO", "35=B|58=there and back");
    std::future<std::string> answered = answer.get_future();
    if (answered.wait_for(std::chrono::seconds(10)) != std::future_status::ready) {
        return "no answer";
    }
    return answered.get();
}

} // namespace

int main() {
    try {
        ZANEngineProxy::initialize(Url("echo:local"));
        std::string const text = sendAndWait(ZANEngineProxy::getInstance());
        ZANEngineProxy::uninitialize();
        std::cout << text << std::endl;
        return text == "there and back" ? 0 : 1;
    } catch (InfraException const& failure) {
        std::cerr << failure.getMessage() << std::endl;
        return 2;
    }
}
