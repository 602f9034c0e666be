// How a connection hands what happened to its listeners, on its delivery thread. Everything with a
// plain count is made here, and let go here.
#include "server/engine/Connection.h"

#include "events/ZANAdminMessageEvent.h"
#include "events/ZANAppMessageEvent.h"
#include "events/ZANConnectionStateEvent.h"
#include "server/engine/EngineErrors.h"
#include "server/wire/GroupReader.h"

#include <exception>

namespace zan::server {

namespace {

constexpr int timeStampTag = 16577;
constexpr int messageIdTag = 16580;

counted_ptr<ZANMessage> modelOf(WireMessage const& message, GroupDictionary const& dictionary) {
    counted_ptr<ZANFieldGroup> const fields =
        readMessage(message.text, fieldSeparator, Reading::Tolerant, dictionary);
    // A counterparty may send anything under these tags, and as text.
    fields->removeField(timeStampTag);
    fields->removeField(messageIdTag);
    fields->setFieldValue(timeStampTag, message.millis);
    fields->setFieldValue(messageIdTag, message.id);
    return counted_ptr<ZANMessage>(new ZANMessage(fields));
}

} // namespace

template <class Call>
void Connection::guarded(std::string const& what, Call call) const {
    try {
        call();
    } catch (std::exception const& e) {
        report(name(), "a listener failed on " + what + ": " + e.what());
    } catch (...) {
        report(name(), "a listener failed on " + what + ": unknown exception");
    }
}

void Connection::deliver(Delivery const& delivery) {
    guarded("an event", [&] {
        if (auto const* message = std::get_if<WireMessage>(&delivery)) {
            deliverMessage(*message);
        } else {
            deliverState(std::get<LinkState>(delivery));
        }
    });
}

void Connection::deliverMessage(WireMessage const& message) {
    counted_ptr<ZANMessage> const model = modelOf(message, dictionary_);
    counted_ptr<ZANEvent> const event(
        message.isAdmin ? static_cast<ZANEvent*>(new ZANAdminMessageEvent(name(), model))
                        : new ZANAppMessageEvent(name(), model));
    std::string const what = "message " + std::to_string(message.id);
    guarded(what, [&] { sink_(event); });
    subscribers_.forEach(
        message.isAdmin ? &EventKinds::admin : &EventKinds::app,
        [&](IZANEventListener& listener) { guarded(what, [&] { listener.processEvent(event); }); });
}

void Connection::deliverState(LinkState const& state) {
    counted_ptr<ZANConnectionStateEvent> const event(
        new ZANConnectionStateEvent(name(), state.record()));
    guarded("a state event",
            [&] { sink_(counted_ptr<ZANEvent>(new ZANConnectionStateEvent(*event))); });
    subscribers_.forEach(&EventKinds::state, [&](IZANEventListener& listener) {
        guarded("a state event", [&] { listener.processStateEvent(event); });
    });
}

} // namespace zan::server
