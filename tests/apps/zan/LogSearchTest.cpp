// What people may write for ids and times.
#include "apps/zan/LogSearch.h"
#include "apps/zan/ExitCodes.h"
#include "infra/Time.h"

#include <gtest/gtest.h>

namespace {

using namespace zan::cli;

std::string rangeOf(std::string const& text) {
    IdRange const range = idRangeOf(text);
    bool const isOpen = range.last == std::numeric_limits<int>::max();
    return std::to_string(range.first) + " to " + (isOpen ? "end" : std::to_string(range.last));
}

TEST(Ids, AreOneOrARangeThatMayBeOpen) {
    EXPECT_EQ(rangeOf("17"), "17 to 17");
    EXPECT_EQ(rangeOf("100-200"), "100 to 200");
    EXPECT_EQ(rangeOf("100-"), "100 to end");
    EXPECT_EQ(rangeOf("-200"), "0 to 200");
}

TEST(Ids, AreNothingElse) {
    for (char const* text : {"", "-", "x", "1-2-3", "1 - 2", "12345678901", "1-x"}) {
        EXPECT_THROW(idRangeOf(text), UsageError) << text;
    }
}

TEST(Times, MayBeToldInPart) {
    for (char const* text : {"", "20261121", "20261121-09", "20261121-09:30", "20261121-09:30:00",
                             "20261121-09:30:00.1", "20261121-09:30:00.123"}) {
        EXPECT_EQ(timeBeginning(text), text);
    }
}

TEST(Times, WithoutADayAreOfToday) {
    std::string const day = infra::Time::now().toString().substr(0, 9);
    EXPECT_EQ(timeBeginning("09:30"), day + "09:30");
    EXPECT_EQ(timeBeginning("09:30:15.250"), day + "09:30:15.250");
}

TEST(Times, AreNothingElse) {
    for (char const* text : {"2026", "20261121-", "20261121-9", "20261121-09:", "20261121-09:3",
                             "20261121 09:30", "20261121-09:30:00.", "20261121-09:30:00.1234",
                             "9:30", "09:3", "09:", "' OR 1 = 1", "2026112109"}) {
        EXPECT_THROW(timeBeginning(text), UsageError) << text;
    }
}

} // namespace
