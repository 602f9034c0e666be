#include "events/ZANAdminMessageEvent.h"
#include "events/ZANAppMessageEvent.h"
#include "events/ZANConnectionStateEvent.h"
#include "events/ZANEngineDefs.h"
#include "support/Slots.h"

#include <gtest/gtest.h>

#include <sstream>
#include <stdexcept>
#include <string>
#include <type_traits>

namespace {

/// Opens the setters that only event classes may call.
class ChangeableEvent : public ZANAppMessageEvent {
public:
    using ZANAppMessageEvent::ZANAppMessageEvent;
    using ZANEvent::setConnectionName;
    using ZANEvent::setMessage;
};

counted_ptr<ZANMessage> newOrder() {
    counted_ptr<ZANFieldGroup> const body(new ZANFieldGroup("D"));
    return counted_ptr<ZANMessage>(new ZANMessage(body));
}

template <class T>
std::string textOf(T const& object) {
    std::ostringstream os;
    os << object;
    return os.str();
}

TEST(EventTypeNames, AreThoseThatListenersSubscribeUnder) {
    EXPECT_EQ(ZANEngineDefs::APP_EVENT_TYPE, "APP");
    EXPECT_EQ(ZANEngineDefs::ADMIN_EVENT_TYPE, "ADMIN");
    EXPECT_EQ(ZANEngineDefs::STATE_EVENT_TYPE, "STATE");
}

TEST(Event, StoresWhatItIsBuiltFrom) {
    auto const message = newOrder();
    ZANEvent const admin(std::string("A"), message, true);
    ZANEvent const app("B", message, false);
    EXPECT_EQ(admin.getConnectionName(), "A");
    EXPECT_EQ(admin.getMessage(), message);
    EXPECT_TRUE(admin.isAdmin());
    EXPECT_EQ(app.getConnectionName(), "B");
    EXPECT_EQ(app.getMessage(), message);
    EXPECT_FALSE(app.isAdmin());
}

TEST(Event, OnlyAnAdminMessageEventIsAdministrative) {
    counted_ptr<ZANConnectionState> const state(new ZANConnectionState);
    EXPECT_TRUE(ZANAdminMessageEvent("A", newOrder()).isAdmin());
    EXPECT_TRUE(ZANAdminMessageEvent(std::string("A"), newOrder()).isAdmin());
    EXPECT_FALSE(ZANAppMessageEvent("A", newOrder()).isAdmin());
    EXPECT_FALSE(ZANAppMessageEvent(std::string("A"), newOrder()).isAdmin());
    EXPECT_FALSE(ZANConnectionStateEvent("A", state).isAdmin());
    EXPECT_FALSE(ZANConnectionStateEvent(std::string("A"), state).isAdmin());
}

TEST(Event, KeepsTheMessageAliveForWhoTookIt) {
    auto event = new ZANAppMessageEvent("A", newOrder());
    auto const message = event->getMessage();
    EXPECT_EQ(message.use_count(), 2u);
    delete event;
    EXPECT_EQ(message.use_count(), 1u);
    EXPECT_TRUE(message->getFieldGroup()->isFieldPresent(35));
}

TEST(Event, LetsGoOfItsArgumentWhenBuilt) {
    auto const message = newOrder();
    ZANAdminMessageEvent const event("A", message);
    EXPECT_EQ(message.use_count(), 2u);
}

TEST(Event, CopySharesTheMessageUntilItIsReplaced) {
    auto const message = newOrder();
    ChangeableEvent const first("A", message);
    ChangeableEvent copy(first);
    EXPECT_EQ(copy.getMessage(), message);
    copy.setMessage(newOrder());
    EXPECT_EQ(first.getMessage(), message);
    EXPECT_NE(copy.getMessage(), message);
}

TEST(Event, CopyHasAConnectionNameOfItsOwn) {
    ChangeableEvent const first("A", newOrder());
    ChangeableEvent copy(first);
    copy.setConnectionName("B");
    EXPECT_EQ(first.getConnectionName(), "A");
    EXPECT_EQ(copy.getConnectionName(), "B");
}

TEST(Event, ReplacedMessageIsLetGo) {
    auto const message = newOrder();
    ChangeableEvent event("A", message);
    event.setMessage(nullptr);
    EXPECT_EQ(message.use_count(), 1u);
}

TEST(Event, AssignmentTakesOverAllThree) {
    ZANEvent const source("A", newOrder(), true);
    ZANEvent target("B", newOrder(), false);
    target = source;
    EXPECT_EQ(target.getConnectionName(), "A");
    EXPECT_EQ(target.getMessage(), source.getMessage());
    EXPECT_TRUE(target.isAdmin());
}

TEST(Event, AnEmptyMessageMayBeCarried) {
    EXPECT_FALSE(ZANAppMessageEvent("A", nullptr).getMessage());
}

TEST(ConnectionStateEvent, HasAStateAndNoMessage) {
    counted_ptr<ZANConnectionState> const state(new ZANConnectionState);
    ZANConnectionStateEvent event(std::string("A"), state);
    EXPECT_EQ(event.getConnectionName(), "A");
    EXPECT_FALSE(event.getMessage());
    EXPECT_EQ(event.getConnectionState(), state);
    EXPECT_EQ(state.use_count(), 2u);
}

TEST(ConnectionStateEvent, SharesAnotherStateWhenTold) {
    counted_ptr<ZANConnectionState> const before(new ZANConnectionState);
    counted_ptr<ZANConnectionState> const after(new ZANConnectionState);
    ZANConnectionStateEvent event("A", before);
    event.setConnectionState(after);
    EXPECT_EQ(event.getConnectionState(), after);
    EXPECT_EQ(before.use_count(), 1u);
}

TEST(ConnectionStateEvent, CopiesShareTheState) {
    counted_ptr<ZANConnectionState> const state(new ZANConnectionState);
    ZANConnectionStateEvent event("A", state);
    ZANConnectionStateEvent copy(event);
    ZANConnectionStateEvent assigned("B", nullptr);
    assigned = event;
    EXPECT_EQ(copy.getConnectionState(), state);
    EXPECT_EQ(assigned.getConnectionState(), state);
    EXPECT_EQ(assigned.getConnectionName(), "A");
}

TEST(ConnectionStateEvent, StateIsNotReachedThroughAConstEvent) {
    EXPECT_TRUE((std::is_same_v<decltype(&ZANConnectionStateEvent::getConnectionState),
                                counted_ptr<ZANConnectionState> (ZANConnectionStateEvent::*)()>));
}

TEST(EventText, ShowsNameAndMessage) {
    auto const message = newOrder();
    std::string const expected = "Connection name: DEMO\nMessage:\n" + textOf(*message) + "\n";
    EXPECT_EQ(textOf(ZANAppMessageEvent("DEMO", message)), expected);
    EXPECT_EQ(textOf(ZANAdminMessageEvent("DEMO", message)), expected);
    EXPECT_EQ(textOf(ZANEvent("DEMO", message, true)), expected);
}

TEST(EventText, ShowsTheStateThoughReachedThroughTheBaseClass) {
    counted_ptr<ZANConnectionState> const state(new ZANConnectionState(0x60));
    ZANConnectionStateEvent const stateEvent("DEMO", state);
    ZANEvent const& event = stateEvent;
    EXPECT_EQ(textOf(event), "Connection name: DEMO\nNew state is: " + textOf(*state) + "\n");
    EXPECT_EQ(state.use_count(), 2u);
}

TEST(EventText, AsksForTheNameThroughTheVirtualOperation) {
    struct Renamed : ZANAppMessageEvent {
        using ZANAppMessageEvent::ZANAppMessageEvent;
        std::string other = "OTHER";
        std::string const& getConnectionName() const override { return other; }
    };
    EXPECT_EQ(textOf(Renamed("DEMO", newOrder())).substr(0, 23), "Connection name: OTHER\n");
}

TEST(EventText, ReturnsTheStream) {
    std::ostringstream os;
    EXPECT_EQ(&(os << ZANAppMessageEvent("DEMO", newOrder())), &os);
}

TEST(EventSlots, StandInTheOrderThatAdaptersWereBuiltWith) {
    EXPECT_EQ(slotOf(&ZANEvent::getConnectionName), 2u);
    EXPECT_EQ(slotOf(&ZANEvent::getMessage), 3u);
    EXPECT_EQ(slotOf(&ZANEvent::isAdmin), 4u);
    EXPECT_EQ(slotOf(&ChangeableEvent::setMessage), 5u);
    EXPECT_EQ(slotOf(&ChangeableEvent::setConnectionName), 6u);
}

TEST(EventSlots, TheStateEventAddsNone) {
    EXPECT_THROW(slotOf(&ZANConnectionStateEvent::getConnectionState), std::logic_error);
    EXPECT_THROW(slotOf(&ZANConnectionStateEvent::setConnectionState), std::logic_error);
}

} // namespace
