// An application outside the tree, built against the installed package: sends one message through
// the echo adapter and waits for it to come back.
#include "comfort/comfort.h"

#include <iostream>

namespace tag = zan::tag;

int main() try {
    UserTicket const me("consumer", "");
    std::string text;
    zan::Signal answered;
    auto listener = zan::listen([&](ZANEvent const& event) {
        text = zan::FieldReader(event).text(tag::Text);
        answered.raise();
    });
    zan::EngineScope const engine(Url("echo:local"));
    engine->subscribe(me, listener, "ECHO", ZANEngineDefs::APP_EVENT_TYPE);
    engine->connect(me, "ECHO");
    engine->sendMessage(me, "ECHO",
                        zan::MessageBuilder(zan::MsgType::News).set(tag::Text, "there and back"));
    bool const isThere = answered.waitFor(std::chrono::seconds(10));
    std::cout << (isThere ? text : "no answer") << std::endl;
    return isThere && text == "there and back" ? 0 : 1;
} catch (InfraException const& failure) {
    std::cerr << failure.getMessage() << std::endl;
    return 2;
}
