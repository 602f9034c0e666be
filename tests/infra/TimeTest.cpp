#include "infra/Time.h"

#include "infra/InfraException.h"

#include <chrono>
#include <gtest/gtest.h>
#include <limits>

namespace {

using infra::Time;

struct Form {
    std::int64_t millis;
    char const* text;
};

Form const FORMS[] = {
    {0, "19700101-00:00:00.000"},
    {-1, "19691231-23:59:59.999"},
    {86'399'999, "19700101-23:59:59.999"},
    {951'782'400'000, "20000229-00:00:00.000"},
    {1'795'232'096'007, "20261121-03:34:56.007"},
    {-2'203'891'200'001, "19000228-23:59:59.999"},
    {-62'167'219'200'000, "00000101-00:00:00.000"},
    {253'402'300'799'999, "99991231-23:59:59.999"},
};

TEST(Time, WritesTextAndReadsItBack) {
    for (Form const& row : FORMS) {
        SCOPED_TRACE(row.text);
        EXPECT_EQ(row.text, Time(row.millis).toString());
        EXPECT_EQ(row.millis, Time::fromString(row.text).getMillis());
    }
}

TEST(Time, IsTheEpochByDefault) {
    EXPECT_EQ(0, Time().getMillis());
}

TEST(Time, ReadsTextWithoutMilliseconds) {
    EXPECT_EQ(Time(951'782'400'000), Time::fromString("20000229-00:00:00"));
}

std::int64_t const OUT_OF_RANGE[] = {
    -62'167'219'200'001,
    253'402'300'800'000,
    std::numeric_limits<std::int64_t>::min(),
    std::numeric_limits<std::int64_t>::max(),
};

TEST(Time, HasNoTextOutsideTheYearsOfFourDigits) {
    for (std::int64_t row : OUT_OF_RANGE) {
        SCOPED_TRACE(row);
        EXPECT_THROW(Time(row).toString(), InfraException);
    }
}

struct Fault {
    char const* text;
    char const* what;
    int character;
};

Fault const FAULTS[] = {
    {"", "the text ends too early", 1},
    {"20261121", "the text ends too early", 9},
    {"20261121-10:00", "the text ends too early", 15},
    {"20261121-10:00:00.", "the text ends too early", 19},
    {"20261121-10:00:00.00", "the text ends too early", 21},
    {"20261121-10:00:00.0000", "the text is too long", 22},
    {"20261121-10:00:00Z", "a '.' is missing", 18},
    {"20261121 10:00:00", "a '-' is missing", 9},
    {"20261121-10.00:00", "a ':' is missing", 12},
    {"2026-11-21T10:00:00", "a digit is missing", 5},
    {"-0261121-10:00:00", "a digit is missing", 1},
    {"20261121-10:00:0x", "a digit is missing", 17},
    {"20260021-10:00:00", "the month is not between 1 and 12", 5},
    {"20261321-10:00:00", "the month is not between 1 and 12", 5},
    {"20261100-10:00:00", "the day is not between 1 and 31", 7},
    {"20261132-10:00:00", "the day is not between 1 and 31", 7},
    {"20261131-10:00:00", "the month has no such day", 7},
    {"19000229-10:00:00", "the month has no such day", 7},
    {"20261121-24:00:00", "the hour is not between 0 and 23", 10},
    {"20261121-10:60:00", "the minute is not between 0 and 59", 13},
    {"20261121-10:00:60", "the second is not between 0 and 59", 16},
};

TEST(Time, TellsWhatIsWrongWhereAndTheRightForm) {
    for (Fault const& row : FAULTS) {
        SCOPED_TRACE(row.text);
        std::string message = "accepted";
        try {
            Time::fromString(row.text);
        } catch (InfraException const& fault) {
            message = fault.getMessage();
        }
        std::string const begin = std::string("\"") + row.text + "\" is no time: ";
        std::string const place = " at character " + std::to_string(row.character) + ". ";
        EXPECT_EQ(0u, message.find(begin + row.what)) << message;
        EXPECT_NE(std::string::npos, message.find(place)) << message;
        EXPECT_NE(std::string::npos, message.find("YYYYMMDD-HH:MM:SS.sss")) << message;
    }
}

TEST(Time, ComparesByItsMilliseconds) {
    Time const early(-1);
    Time const late(1);
    EXPECT_TRUE(early < late && early <= late && late > early && late >= early && early != late);
    EXPECT_FALSE(late < early || late <= early || early > late || early >= late || early == late);
    EXPECT_TRUE(early == Time(-1) && early <= Time(-1) && early >= Time(-1));
    EXPECT_FALSE(early != Time(-1) || early < Time(-1) || early > Time(-1));
}

TEST(Time, NowIsThePresent) {
    using namespace std::chrono;
    auto const clock = [] {
        auto const now = system_clock::now().time_since_epoch();
        return std::int64_t(duration_cast<milliseconds>(now).count());
    };
    std::int64_t const before = clock();
    std::int64_t const now = Time::now().getMillis();
    EXPECT_LE(before, now);
    EXPECT_GE(clock(), now);
}

} // namespace
