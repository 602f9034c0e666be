// The echo adapter as applications meet it: loaded by URL and driven through the facade alone. The
// promises of every adapter come from the kit; what is this adapter's own is a test beside them.
#include "conformance/Conformance.h"
#include "engine/ZANEngineProxy.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace {

using namespace zan::conformance;

char const* const url = "echo:local?connections=A,B";

std::unique_ptr<ConformanceContext> makeContext() {
    Abilities const abilities = Abilities::parse("connections,sending,events,clock");
    return std::make_unique<UrlContext>(url, abilities);
}

TEST(Echo, NamesTheConnectionsOfItsUrl) {
    ZANEngineProxy::initialize(Url(url));
    std::vector<std::string> names;
    ZANEngineProxy::getInstance().getConnectionNameList(UserTicket("tester", ""), names);
    EXPECT_EQ(names, (std::vector<std::string>{"A", "B"}));
    ZANEngineProxy::uninitialize();
}

} // namespace

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    registerConformance("Echo", makeContext);
    return RUN_ALL_TESTS();
}
