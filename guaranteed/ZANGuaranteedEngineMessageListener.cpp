#include "guaranteed/ZANGuaranteedEngineMessageListener.h"

#include "adapter/ListenerCounts.h"
#include "engine/ZANEngineProxy.h"
#include "errors/ZANEngineException.h"
#include "errors/ZANInvalidMessageException.h"
#include "guaranteed/SharedAdapters.h"
#include "guaranteed/ZANGMLAdapter.h"
#include "guaranteed/ZANGMLAdapterFactory.h"
#include "infra/InfraException.h"

#include <iostream>
#include <utility>

namespace {

/// Stands in for a missing application listener.
class DummyListener final : public IZANEventListener {
public:
    void processEvent(counted_ptr<ZANEvent>) override {}
    void processStateEvent(counted_ptr<ZANConnectionStateEvent>) override {}
};

counted_ptr<IZANEventListener> orDummy(counted_ptr<IZANEventListener> const& listener) {
    return listener ? zan::share(listener) : counted_ptr<IZANEventListener>(new DummyListener);
}

ZANGMLAdapterFactory& currentFactory() {
    return ZANEngineProxy::getInstance().getGMLAdapterFactory();
}

ZANMessage messageOf(ZANEvent const& event) {
    counted_ptr<ZANMessage> const message = event.getMessage();
    counted_ptr<ZANFieldGroup> const fields =
        message ? message->getFieldGroup() : counted_ptr<ZANFieldGroup>();
    for (int const tag : {ZANMessage::CONNECTION_MESSAGE_ID_TAG, ZANMessage::STREAM_TAG}) {
        if (!fields || !fields->getField(tag)) {
            throw ZANInvalidMessageException(
                "connection " + event.getConnectionName() + ": the event has no field " +
                std::to_string(tag) +
                ", so its message cannot be marked; a message event that a "
                "guaranteed listener got would be right");
        }
    }
    return *message;
}

// The adapter as it is, counted; it goes back when there is no memory for that.
ZANGMLAdapter* newAdapter(ZANGuaranteedEngineMessageListener* listener) {
    ZANGMLAdapterFactory& factory = currentFactory();
    ZANGMLAdapter* const adapter = factory.newGMLAdapter(listener);
    try {
        zan::SharedAdapters::add(adapter);
    } catch (...) {
        factory.deleteGMLAdapter(adapter);
        throw;
    }
    return adapter;
}

} // namespace

ZANGuaranteedEngineMessageListener::ZANGuaranteedEngineMessageListener(
    counted_ptr<IZANEventListener> const& listener)
    : listener_(orDummy(listener)), adapter_(newAdapter(this)) {}

ZANGuaranteedEngineMessageListener::ZANGuaranteedEngineMessageListener(
    ZANGuaranteedEngineMessageListener const& other)
    : listener_(zan::share(other.listener_)), adapter_(other.adapter_) {
    zan::SharedAdapters::add(adapter_);
}

ZANGuaranteedEngineMessageListener&
ZANGuaranteedEngineMessageListener::operator=(ZANGuaranteedEngineMessageListener const& other) {
    if (this == &other) {
        return *this;
    }
    zan::SharedAdapters::add(other.adapter_);
    zan::SharedAdapters::remove(std::exchange(adapter_, other.adapter_));
    counted_ptr<IZANEventListener> before = zan::share(other.listener_);
    listener_.swap(before);
    zan::letGo(before);
    return *this;
}

ZANGuaranteedEngineMessageListener::~ZANGuaranteedEngineMessageListener() noexcept(false) {
    struct Release {
        ZANGuaranteedEngineMessageListener& listener;
        ~Release() {
            zan::SharedAdapters::remove(listener.adapter_);
            zan::letGo(listener.listener_);
        }
    };
    Release const whateverHappens{*this};
    try {
        currentFactory().deleteGMLAdapter(adapter_);
    } catch (ZANEngineException const&) {
        // The facade may be gone already; the adapter went with its transport.
    } catch (InfraException const& e) {
        // "destroing" is spelled so on purpose: the text is searched for in logs.
        std::cout << "Caught an exception while destroing ZANGuaranteedEngineMessageListener: "
                  << e.what() << "\n"
                  << std::flush;
    }
}

void ZANGuaranteedEngineMessageListener::processEvent(counted_ptr<ZANEvent> event) {
    listener_->processEvent(event);
}

void ZANGuaranteedEngineMessageListener::processStateEvent(
    counted_ptr<ZANConnectionStateEvent> event) {
    listener_->processStateEvent(event);
}

void ZANGuaranteedEngineMessageListener::setLastConsumedAdminMessageFromCounterPartyId(
    std::string const& connectionName, int messageId) {
    setLastConsumedMessage(connectionName, messageId, ADMIN_MSG_FROM_COUNTERPARTY);
}

void ZANGuaranteedEngineMessageListener::setLastConsumedAdminMessageToCounterPartyId(
    std::string const& connectionName, int messageId) {
    setLastConsumedMessage(connectionName, messageId, ADMIN_MSG_TO_COUNTERPARTY);
}

void ZANGuaranteedEngineMessageListener::setLastConsumedAppMessageFromCounterPartyId(
    std::string const& connectionName, int messageId) {
    setLastConsumedMessage(connectionName, messageId, APP_MSG_FROM_COUNTERPARTY);
}

void ZANGuaranteedEngineMessageListener::setLastConsumedAppMessageToCounterPartyId(
    std::string const& connectionName, int messageId) {
    setLastConsumedMessage(connectionName, messageId, APP_MSG_TO_COUNTERPARTY);
}

void ZANGuaranteedEngineMessageListener::setLastConsumedResentMessageId(
    std::string const& connectionName, int messageId) {
    setLastConsumedMessage(connectionName, messageId, RESENT_MSG);
}

void ZANGuaranteedEngineMessageListener::consumed(ZANEvent const& event) {
    ZANMessage const message = messageOf(event);
    setLastConsumedMessage(event.getConnectionName(), message.getConnectionMessageId(),
                           static_cast<MessageTypeIds>(message.getStream()));
}

void ZANGuaranteedEngineMessageListener::consumed(counted_ptr<ZANEvent> const& event) {
    consumed(*event);
}

void ZANGuaranteedEngineMessageListener::skip(ZANEvent const& event) {
    consumed(event);
}

void ZANGuaranteedEngineMessageListener::skip(counted_ptr<ZANEvent> const& event) {
    consumed(*event);
}

void ZANGuaranteedEngineMessageListener::skip(std::string const& connectionName, int messageId,
                                              MessageTypeIds stream) {
    setLastConsumedMessage(connectionName, messageId, stream);
}

void ZANGuaranteedEngineMessageListener::retrievePotentiallyLostMessages() {
    adapter_->retrievePotentiallyLostMessages();
}

void ZANGuaranteedEngineMessageListener::setSubscriptionFilter(std::string const& filter) {
    adapter_->setSubscriptionFilter(filter);
}

std::string ZANGuaranteedEngineMessageListener::getSubscriptionFilter() {
    return adapter_->getSubscriptionFilter();
}

void ZANGuaranteedEngineMessageListener::resetSubscriptionFilter() {
    adapter_->resetSubscriptionFilter();
}

ZANGMLAdapter& ZANGuaranteedEngineMessageListener::getAdapter() {
    return *adapter_;
}

void ZANGuaranteedEngineMessageListener::setLastConsumedMessage(std::string const& connectionName,
                                                                int messageId,
                                                                MessageTypeIds stream) {
    adapter_->setLastConsumedMessage(connectionName, messageId, stream);
}
