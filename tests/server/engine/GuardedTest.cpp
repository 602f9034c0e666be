#include "server/engine/Guarded.h"

#include "support/CapturedOutput.h"

#include <gtest/gtest.h>

#include <new>
#include <stdexcept>

namespace {

using zan::server::callGuarded;

std::string reasonOf(void (*call)()) {
    std::string reason = "none";
    bool const isWell = callGuarded(call, [&](char const* what) { reason = what; });
    EXPECT_EQ(isWell, reason == "none");
    return reason;
}

TEST(Guarded, TellsWhatACallThrows) {
    EXPECT_EQ(reasonOf([] {}), "none");
    EXPECT_EQ(reasonOf([] { throw std::runtime_error("boom"); }), "boom");
    EXPECT_EQ(reasonOf([] { throw 42; }), "unknown exception");
    EXPECT_EQ(reasonOf([] { throw std::bad_alloc(); }), std::bad_alloc().what());
}

TEST(Guarded, LivesWithoutTheMemoryToTellAFailure) {
    CapturedOutput const output;
    EXPECT_FALSE(
        callGuarded([] { throw std::bad_alloc(); }, [](char const*) { throw std::bad_alloc(); }));
    EXPECT_EQ(output.text(), "A connection failed, and there is no memory to tell more\n");
}

} // namespace
