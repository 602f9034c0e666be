// The module behind fault: URLs.
#include "engine/ZANEngineProxy.h"
#include "errors/ZANNotConnectedException.h"
#include "infra/WrongConfigurationException.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace {

class FaultModule : public testing::Test {
protected:
    void SetUp() override {
        std::string pattern =
            (std::filesystem::temp_directory_path() / "zan-fault-XXXXXX").string();
        folder_ = mkdtemp(pattern.data());
    }
    void TearDown() override {
        ZANEngineProxy::uninitialize();
        std::filesystem::remove_all(folder_);
    }

    std::string scriptOf(std::string const& text) const {
        std::string const path = folder_ + "/faults";
        std::ofstream(path) << text;
        return path;
    }

    static std::string refusalOf(std::string const& url) {
        try {
            ZANEngineProxy::initialize(Url(url));
        } catch (WrongConfigurationException const& e) {
            return e.getMessage();
        }
        return "nothing was thrown";
    }

    UserTicket const me_{"tester", ""};
    std::string folder_;
};

TEST_F(FaultModule, PutsItsScriptBeforeTheInnerAdapter) {
    std::string const script = scriptOf("throw sendMessage 1 ZANNotConnectedException pulled\n");
    ZANEngineProxy::initialize(Url("fault:any?inner=embedded:demo&script=" + script));
    ZANEngineProxy& engine = ZANEngineProxy::getInstance();
    engine.connect(me_, "fault.DEMO");
    EXPECT_THROW(engine.sendMessage(me_, "fault.DEMO", "35=B|148=x"), ZANNotConnectedException);
    EXPECT_GT(engine.sendMessage(me_, "fault.DEMO", "35=B|148=x"), 0);
}

TEST_F(FaultModule, NeedsAnInnerAdapter) {
    EXPECT_EQ(refusalOf("fault:any"),
              "fault:any: names no inner adapter; fault:any?inner=embedded:demo&script=<file> "
              "would be right");
    EXPECT_NE(refusalOf("fault:any?inner=nobody:x").find("create_nobody_engineadapter"),
              std::string::npos);
}

TEST_F(FaultModule, NeedsAScriptThatCanBeRead) {
    EXPECT_EQ(refusalOf("fault:any?inner=embedded:demo&script=" + folder_ + "/none").find(folder_),
              0u);
}

} // namespace
