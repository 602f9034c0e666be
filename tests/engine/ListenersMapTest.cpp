#include "engine/ZANEngineProxy.h"

#include "support/RecordingListener.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

// The proxy's maps, as a class derived from it sees them.
class MapSource : public ZANEngineProxy {
public:
    using ZANEngineProxy::createConnectionToAppListenersMap;
    using ZANEngineProxy::selectListenersMap;
};

using Listener = counted_ptr<IZANEventListener>;
using Map = ZANEngineProxy::ConnectionToListenersMap;

std::vector<Listener> listenersOf(Map& map, std::string const& name) {
    std::vector<Listener> found;
    auto const listeners = map.getListeners(name);
    EXPECT_TRUE(listeners);
    for (; listeners->hasNext(); listeners->next()) {
        found.push_back(listeners->current());
    }
    return found;
}

TEST(ConnectionToListenersMap, WalksOverTheListenersOfExactlyOneName) {
    MapSource source;
    auto const map = source.createConnectionToAppListenersMap();
    auto const first = recordingListener();
    auto const second = recordingListener();
    auto const other = recordingListener();
    map->addListener("A", first);
    map->addListener("AB", other);
    map->addListener("A", second);
    map->addListener("A", first);
    EXPECT_EQ(std::vector({first, second}), listenersOf(*map, "A"));
    EXPECT_EQ(std::vector({other}), listenersOf(*map, "AB"));
    EXPECT_TRUE(listenersOf(*map, "").empty());
    map->removeListener("A", other);
    map->removeListener("A", first);
    EXPECT_EQ(std::vector({second}), listenersOf(*map, "A"));
    map->removeListener("A", second);
    EXPECT_TRUE(listenersOf(*map, "A").empty());
}

TEST(ConnectionToListenersMap, EachCallMakesANewEmptyMap) {
    MapSource source;
    auto const map = source.createConnectionToAppListenersMap();
    map->addListener("A", recordingListener());
    auto const other = source.createConnectionToAppListenersMap();
    EXPECT_NE(map, other);
    EXPECT_TRUE(listenersOf(*other, "A").empty());
}

TEST(SelectListenersMap, KnowsTheThreeEventTypesAndLeavesTheMapForOthers) {
    MapSource source;
    counted_ptr<Map> maps[3];
    EXPECT_TRUE(source.selectListenersMap(maps[0], "APP"));
    EXPECT_TRUE(source.selectListenersMap(maps[1], "ADMIN"));
    EXPECT_TRUE(source.selectListenersMap(maps[2], "STATE"));
    EXPECT_TRUE(maps[0] != maps[1] && maps[1] != maps[2] && maps[0] != maps[2]);
    auto map = maps[0];
    EXPECT_FALSE(source.selectListenersMap(map, "app"));
    EXPECT_EQ(maps[0], map);
}

} // namespace
