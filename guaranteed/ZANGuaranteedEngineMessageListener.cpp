#include "guaranteed/ZANGuaranteedEngineMessageListener.h"

#include "engine/ZANEngineProxy.h"
#include "errors/ZANEngineException.h"
#include "guaranteed/ZANGMLAdapter.h"
#include "guaranteed/ZANGMLAdapterFactory.h"
#include "infra/InfraException.h"

#include <iostream>

namespace {

/// Stands in for a missing application listener.
class DummyListener final : public IZANEventListener {
public:
    void processEvent(counted_ptr<ZANEvent>) override {}
    void processStateEvent(counted_ptr<ZANConnectionStateEvent>) override {}
};

counted_ptr<IZANEventListener> orDummy(counted_ptr<IZANEventListener> const& listener) {
    return listener ? listener : counted_ptr<IZANEventListener>(new DummyListener);
}

ZANGMLAdapterFactory& currentFactory() {
    return ZANEngineProxy::getInstance().getGMLAdapterFactory();
}

} // namespace

ZANGuaranteedEngineMessageListener::ZANGuaranteedEngineMessageListener(
    counted_ptr<IZANEventListener> const& listener)
    : listener_(orDummy(listener)), adapter_(currentFactory().newGMLAdapter(this)) {}

ZANGuaranteedEngineMessageListener::ZANGuaranteedEngineMessageListener(
    ZANGuaranteedEngineMessageListener const& other) = default;

ZANGuaranteedEngineMessageListener& ZANGuaranteedEngineMessageListener::operator=(
    ZANGuaranteedEngineMessageListener const& other) = default;

ZANGuaranteedEngineMessageListener::~ZANGuaranteedEngineMessageListener() noexcept(false) {
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
