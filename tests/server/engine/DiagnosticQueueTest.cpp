#include "server/engine/DiagnosticQueue.h"

#include <gtest/gtest.h>

#include <future>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace {

using zan::server::DiagnosticQueue;

class DiagnosticQueueTest : public testing::Test {
protected:
    void TearDown() override { setDiagnosticSink(nullptr); }

    void listen() {
        setDiagnosticSink(
            [this](DiagnosticLevel level, std::string const& category, std::string const& text) {
                told_.push_back(std::string(levelName(level)) + " " + category + ": " + text);
                teller_ = std::this_thread::get_id();
            },
            DiagnosticLevel::Debug);
    }

    void tell(std::string const& text) {
        queue_->tell(DiagnosticLevel::Info, "test", [&] { return text; });
    }

    /// Everything that was told until the queue's end.
    std::vector<std::string> const& toldAtEnd() {
        queue_.reset();
        return told_;
    }

    std::vector<std::string> told_;
    std::thread::id teller_;
    std::unique_ptr<DiagnosticQueue> queue_ = std::make_unique<DiagnosticQueue>();
};

TEST_F(DiagnosticQueueTest, MakesNoTextWhenNobodyListens) {
    queue_->tell(DiagnosticLevel::Error, "test", []() -> std::string {
        ADD_FAILURE() << "a text was made";
        return "";
    });
}

TEST_F(DiagnosticQueueTest, TellsInOrderBeforeItsEnd) {
    listen();
    tell("one");
    tell("two");
    EXPECT_EQ(toldAtEnd(), (std::vector<std::string>{"INFO test: one", "INFO test: two"}));
}

TEST_F(DiagnosticQueueTest, TellsFromAThreadOfItsOwn) {
    listen();
    tell("one");
    toldAtEnd();
    EXPECT_NE(teller_, std::this_thread::get_id());
    EXPECT_NE(teller_, std::thread::id());
}

TEST_F(DiagnosticQueueTest, MasksSecretsAndShowsControlCharactersAsBlanks) {
    listen();
    tell("a\nb 35=A\x01"
         "554=secret\x01"
         "108=30");
    EXPECT_EQ(toldAtEnd(), std::vector<std::string>{"INFO test: a b 35=A 554=*** 108=30"});
}

TEST_F(DiagnosticQueueTest, LetsTheSinkTellSomethingItself) {
    DiagnosticQueue& queue = *queue_;
    setDiagnosticSink([&](DiagnosticLevel, std::string const&, std::string const& text) {
        told_.push_back(text);
        if (text == "one") {
            queue.tell(DiagnosticLevel::Info, "test", [&] { return "an answer to " + text; });
        }
    });
    tell("one");
    EXPECT_EQ(toldAtEnd(), (std::vector<std::string>{"one", "an answer to one"}));
}

TEST_F(DiagnosticQueueTest, DropsWhatASlowSinkCannotTakeAndSaysSo) {
    std::promise<void> entered;
    std::promise<void> goOn;
    setDiagnosticSink([&](DiagnosticLevel, std::string const&, std::string const& text) {
        told_.push_back(text);
        if (text == "first") {
            entered.set_value();
            goOn.get_future().wait();
        }
    });
    tell("first");
    entered.get_future().wait();
    for (std::size_t i = 0; i < DiagnosticQueue::capacity + 7; ++i) {
        tell("more");
    }
    goOn.set_value();
    std::vector<std::string> const& told = toldAtEnd();
    ASSERT_EQ(told.size(), DiagnosticQueue::capacity + 2);
    EXPECT_EQ(told.back(), "7 texts like these were dropped: the sink is too slow");
}

} // namespace
