#include "infra/Diagnostics.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace {

class Diagnostics : public testing::Test {
protected:
    void TearDown() override { setDiagnosticSink(nullptr); }

    void listen(DiagnosticLevel lowest) {
        setDiagnosticSink(
            [this](DiagnosticLevel level, std::string const& category, std::string const& text) {
                told_.push_back(std::string(levelName(level)) + " " + category + ": " + text);
            },
            lowest);
    }

    std::vector<std::string> told_;
};

TEST_F(Diagnostics, AreSilentByDefault) {
    EXPECT_FALSE(isDiagnosing(DiagnosticLevel::Debug));
    EXPECT_FALSE(isDiagnosing(DiagnosticLevel::Error));
    diagnose(DiagnosticLevel::Error, "session", "nobody hears this");
}

TEST_F(Diagnostics, ReachTheSinkFromTheLowestLevelOn) {
    listen(DiagnosticLevel::Info);
    diagnose(DiagnosticLevel::Debug, "a", "1");
    diagnose(DiagnosticLevel::Info, "b", "2");
    diagnose(DiagnosticLevel::Warning, "c", "3");
    diagnose(DiagnosticLevel::Error, "d", "4");
    EXPECT_EQ(told_, (std::vector<std::string>{"INFO b: 2", "WARNING c: 3", "ERROR d: 4"}));
    EXPECT_FALSE(isDiagnosing(DiagnosticLevel::Debug));
    EXPECT_TRUE(isDiagnosing(DiagnosticLevel::Info));
}

TEST_F(Diagnostics, ReachTheSinkAtDebugWhenItAsksForAll) {
    listen(DiagnosticLevel::Debug);
    diagnose(DiagnosticLevel::Debug, "a", "1");
    EXPECT_EQ(told_, std::vector<std::string>{"DEBUG a: 1"});
}

TEST_F(Diagnostics, EndWithAnEmptySink) {
    listen(DiagnosticLevel::Debug);
    setDiagnosticSink(nullptr);
    diagnose(DiagnosticLevel::Error, "a", "1");
    EXPECT_TRUE(told_.empty());
    EXPECT_FALSE(isDiagnosing(DiagnosticLevel::Error));
}

TEST_F(Diagnostics, DropWhatASinkThrows) {
    setDiagnosticSink(
        [](DiagnosticLevel, std::string const&, std::string const& text) {
            if (text == "standard") {
                throw std::runtime_error("the log is full");
            }
            throw 7;
        },
        DiagnosticLevel::Debug);
    EXPECT_NO_THROW(diagnose(DiagnosticLevel::Error, "a", "standard"));
    EXPECT_NO_THROW(diagnose(DiagnosticLevel::Error, "a", "another"));
}

TEST_F(Diagnostics, LetASinkReplaceItself) {
    setDiagnosticSink([this](DiagnosticLevel, std::string const&,
                             std::string const&) { listen(DiagnosticLevel::Debug); },
                      DiagnosticLevel::Debug);
    diagnose(DiagnosticLevel::Info, "a", "1");
    diagnose(DiagnosticLevel::Info, "a", "2");
    EXPECT_EQ(told_, std::vector<std::string>{"INFO a: 2"});
}

TEST_F(Diagnostics, KeepASinkWhileItIsRunning) {
    auto owned = std::make_shared<std::string>("still there");
    std::weak_ptr<std::string> const watched = owned;
    std::string seen;
    setDiagnosticSink(
        [owned = std::move(owned), &seen](DiagnosticLevel, std::string const&, std::string const&) {
            setDiagnosticSink(nullptr);
            seen = *owned;
        });
    diagnose(DiagnosticLevel::Info, "a", "1");
    EXPECT_EQ(seen, "still there");
    EXPECT_TRUE(watched.expired());
}

TEST_F(Diagnostics, MayBeToldWhileTheSinkIsReplaced) {
    std::atomic<int> heard{0};
    std::atomic<bool> isEnding{false};
    std::vector<std::thread> tellers;
    for (int i = 0; i < 2; ++i) {
        tellers.emplace_back([&] {
            while (!isEnding) {
                diagnose(DiagnosticLevel::Warning, "a", "text");
            }
        });
    }
    for (int i = 0; i < 200 || heard < 1000; ++i) {
        auto const mine = std::make_shared<int>(1);
        setDiagnosticSink([&heard, mine](DiagnosticLevel, std::string const&, std::string const&) {
            heard += *mine;
        });
    }
    isEnding = true;
    for (std::thread& teller : tellers) {
        teller.join();
    }
    EXPECT_GE(heard, 1000);
}

} // namespace
