// What people may write for ids and times.
#include "apps/zan/LogSearch.h"
#include "apps/zan/ExitCodes.h"
#include "apps/zan/ExpressionNames.h"
#include "apps/zan/LogTimes.h"
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

infra::Time const now = infra::Time::fromString("20261122-00:02:30.500");

TEST(Times, WithoutADayAreOfToday) {
    EXPECT_EQ(timeBeginning("09:30", now), "20261122-09:30");
    EXPECT_EQ(timeBeginning("09:30:15.250", now), "20261122-09:30:15.250");
}

TEST(Times, MayLieATimeAgo) {
    EXPECT_EQ(timeBeginning("-5m", now), "20261121-23:57:30.500");
    EXPECT_EQ(timeBeginning("-90s", now), "20261122-00:01:00.500");
    EXPECT_EQ(timeBeginning("-2h", now), "20261121-22:02:30.500");
    EXPECT_EQ(timeBeginning("-365d", now), "20251122-00:02:30.500");
}

TEST(Times, MayHaveTheFormOfIso8601) {
    EXPECT_EQ(timeBeginning("2026-11-21"), "20261121");
    EXPECT_EQ(timeBeginning("2026-11-21T09:30"), "20261121-09:30");
    EXPECT_EQ(timeBeginning("2026-11-21 09:30:00"), "20261121-09:30:00");
    EXPECT_EQ(timeBeginning("2026-11-21T09:30:00.123Z"), "20261121-09:30:00.123");
    EXPECT_EQ(timeBeginning("2026-11-21T00:30:00+01:00"), "20261120-23:30:00");
    EXPECT_EQ(timeBeginning("2026-12-31T23:30-05:30"), "20270101-05:00");
}

TEST(Times, AreNothingElse) {
    for (char const* text : {"2026",
                             "20261121-",
                             "20261121-9",
                             "20261121-09:",
                             "20261121-09:3",
                             "20261121 09:30",
                             "20261121-09:30:00.",
                             "20261121-09:30:00.1234",
                             "9:30",
                             "09:3",
                             "09:",
                             "' OR 1 = 1",
                             "2026112109",
                             "-5",
                             "-m",
                             "-5y",
                             "5m",
                             "-99999999999d",
                             "2026-11-21X09:30",
                             "2026-11",
                             "2026-11-21T",
                             "2026-11-21T09:30+1",
                             "2026-02-30",
                             "20261332",
                             "20261121-25:00",
                             "2026-11-21T09:30ZZ",
                             "+01:00"}) {
        EXPECT_THROW(timeBeginning(text), UsageError) << text;
    }
}

std::string numbered(std::string const& expression) {
    Names names("");
    return withTagNumbers(expression, names);
}

TEST(Expressions, MayNameTags) {
    EXPECT_EQ(numbered("type = '8' AND Symbol = 'IBM'"), "type = '8' AND tag(55) = 'IBM'");
    EXPECT_EQ(numbered("(ClOrdID)IN('a')OR Text LIKE '%x%'"),
              "(tag(11))IN('a')OR tag(58) LIKE '%x%'");
    EXPECT_EQ(numbered("length(Text)>3"), "length(tag(58))>3");
    EXPECT_EQ(numbered("tag(55) = 'IBM'"), "tag(55) = 'IBM'");
}

TEST(Expressions, KeepWhatIsNoNameOfATag) {
    for (char const* text :
         {"", "text = 'Symbol'", "\"Symbol\" = 1", "[Symbol]", "`Symbol`", "note = 'it''s Symbol'",
          "1 -- Symbol", "/* Symbol */ 1", "symbol = 1", "SYMBOL = 1", "Symbol (1)",
          "CAST(seq AS Text)", "XSymbol = 1", "Symbol2 = 1", "'not ended Symbol", "55 = 55"}) {
        EXPECT_EQ(numbered(text), text);
    }
}

} // namespace
