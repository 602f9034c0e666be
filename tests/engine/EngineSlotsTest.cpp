#include "engine/ZANEngineProxy.h"
#include "support/Slots.h"

#include <gtest/gtest.h>

#include <string>

namespace {

struct Probe : ZANEngineProxy {
    using ZANEngineProxy::createConnectionToAdminListenersMap;
    using ZANEngineProxy::createConnectionToAppListenersMap;
    using ZANEngineProxy::createConnectionToStateListenersMap;
    using ZANEngineProxy::getAdapter;
    using ZANEngineProxy::notifyListeners;
    using ZANEngineProxy::setAdapter;
};

// The destructor fills two entries, so slot n of the engine operations is entry n + 1.
TEST(ZANEngineProxy, ContinuesTheSlotsOfTheEngineOperations) {
    EXPECT_EQ(40u, slotOf(&ZANEngineProxy::getMillisTime));
    EXPECT_EQ(41u, slotOf(&ZANEngineProxy::getGMLAdapterFactory));
    EXPECT_EQ(42u, slotOf(&Probe::notifyListeners));
    EXPECT_EQ(43u, slotOf(&Probe::createConnectionToAdminListenersMap));
    EXPECT_EQ(44u, slotOf(&Probe::createConnectionToAppListenersMap));
    EXPECT_EQ(45u, slotOf(&Probe::createConnectionToStateListenersMap));
    EXPECT_EQ(46u, slotOf(&Probe::setAdapter));
    EXPECT_EQ(47u, slotOf(&Probe::getAdapter));
}

TEST(ConnectionToListenersMap, KeepsItsSlots) {
    using Map = ZANEngineProxy::ConnectionToListenersMap;
    EXPECT_EQ(2u, slotOf(&Map::addListener));
    EXPECT_EQ(3u, slotOf(&Map::removeListener));
    EXPECT_EQ(4u, slotOf(&Map::getListeners));
}

} // namespace
