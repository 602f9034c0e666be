// An application that brings its adapter along: an engine that answers every message by an event.
#include "../adapter-template/UnsupportedOperations.h"
#include "comfort/comfort.h"

#include <iostream>

namespace tag = zan::tag;

namespace {

// Everything that it does not offer is refused by name.
class MirrorAdapter : public UnsupportedOperations {
public:
    using UnsupportedOperations::UnsupportedOperations;

    void initialize() override {}
    void uninitialize() override {}
    bool isThreadSafe() override { return false; } // the facade lets in one call at a time
    ZANGMLAdapterFactory& getGMLAdapterFactory() override { return guaranteed_; }

    void getConnectionNameList(UserTicket const&, std::vector<std::string>& names) override {
        names.push_back("MIRROR");
    }

    using UnsupportedOperations::sendMessage;
    long sendMessage(UserTicket const&, Name const& name, Text const& text) override {
        zan::MessageBuilder answer(zan::MsgType::News);
        answer.set(tag::Text, "you said: " + text);
        answer.set(16580, ++lastId_); // the connection message id
        eventReceived(make_counted<ZANEvent, ZANAppMessageEvent>(name, answer.build()));
        return lastId_;
    }

private:
    ZANGMLAdapterFactory guaranteed_;
    long lastId_ = 0;
};

class Factory : public IZANEngineAdapterFactory {
public:
    counted_ptr<IZANEngineAdapter>
    createAdapter(counted_ptr<IZANEngineConfigProvider> provider) override {
        return make_counted<IZANEngineAdapter, MirrorAdapter>(provider);
    }
};

class NoProperties : public IZANEngineConfigProvider {
public:
    std::string getProperty(std::string const&, std::string const& byDefault) const override {
        return byDefault;
    }
};

} // namespace

int main() try {
    zan::EngineScope const engine(make_counted<IZANEngineConfigProvider, NoProperties>(),
                                  make_counted<IZANEngineAdapterFactory, Factory>());
    UserTicket const me("me", "");
    auto printer = zan::listen([](ZANEvent const& event) {
        std::cout << event.getConnectionName() << ": " << zan::FieldReader(event).text(tag::Text)
                  << std::endl;
    });
    engine->subscribe(me, printer, "MIRROR", ZANEngineDefs::APP_EVENT_TYPE);
    long const id = engine->sendMessage(me, "MIRROR", "hello");
    std::cout << "sent as " << id << std::endl;
    engine->connect(me, "MIRROR"); // is not offered
} catch (std::exception const& e) {
    std::cout << e.what() << std::endl;
}
