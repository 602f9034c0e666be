// An application that brings its adapter along: an engine that answers every message by an event.
#include "../adapter-template/UnsupportedOperations.h"
#include "zanengine.h"

#include <iostream>

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
        counted_ptr<ZANFieldGroup> const answer(new ZANFieldGroup(ZAN::MSGTYPE_NEWS));
        answer->setFieldValue(58, "you said: " + text);
        answer->setFieldValue(16580, ++lastId_); // the connection message id
        counted_ptr<ZANMessage> const message(new ZANMessage(answer));
        eventReceived(counted_ptr<ZANEvent>(new ZANAppMessageEvent(name, message)));
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
        return counted_ptr<IZANEngineAdapter>(new MirrorAdapter(provider));
    }
};

class NoProperties : public IZANEngineConfigProvider {
public:
    std::string getProperty(std::string const&, std::string const& byDefault) const override {
        return byDefault;
    }
};

class Printer : public IZANEventListener {
public:
    void processEvent(counted_ptr<ZANEvent> event) override {
        std::cout << event->getConnectionName() << ": "
                  << event->getMessage()->getFieldGroup()->getField(58)->getValue() << std::endl;
    }
};

} // namespace

int main() try {
    ZANEngineProxy::initialize(counted_ptr<IZANEngineConfigProvider>(new NoProperties),
                               counted_ptr<IZANEngineAdapterFactory>(new Factory));
    ZANEngineProxy& engine = ZANEngineProxy::getInstance();
    UserTicket const me("me", "");
    counted_ptr<IZANEventListener> listener(new Printer);
    engine.subscribe(me, listener, "MIRROR", ZANEngineDefs::APP_EVENT_TYPE);
    long const id = engine.sendMessage(me, "MIRROR", "hello");
    std::cout << "sent as " << id << std::endl;
    engine.connect(me, "MIRROR"); // is not offered
} catch (std::exception const& e) {
    std::cout << e.what() << std::endl;
    ZANEngineProxy::uninitialize();
}
