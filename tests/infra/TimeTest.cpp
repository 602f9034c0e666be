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

class TimeForms : public testing::TestWithParam<Form> {};

TEST_P(TimeForms, AreWrittenAndReadBack) {
    EXPECT_EQ(GetParam().text, Time(GetParam().millis).toString());
    EXPECT_EQ(GetParam().millis, Time::fromString(GetParam().text).getMillis());
}

INSTANTIATE_TEST_SUITE_P(Table, TimeForms,
                         testing::Values(Form{0, "19700101-00:00:00.000"},
                                         Form{-1, "19691231-23:59:59.999"},
                                         Form{86'399'999, "19700101-23:59:59.999"},
                                         Form{951'782'400'000, "20000229-00:00:00.000"},
                                         Form{1'795'232'096'007, "20261121-03:34:56.007"},
                                         Form{-2'203'891'200'001, "19000228-23:59:59.999"},
                                         Form{-62'167'219'200'000, "00000101-00:00:00.000"},
                                         Form{253'402'300'799'999, "99991231-23:59:59.999"}));

TEST(Time, IsTheEpochByDefault) {
    EXPECT_EQ(0, Time().getMillis());
}

TEST(Time, ReadsTextWithoutMilliseconds) {
    EXPECT_EQ(Time(951'782'400'000), Time::fromString("20000229-00:00:00"));
}

class TimeOutOfRange : public testing::TestWithParam<std::int64_t> {};

TEST_P(TimeOutOfRange, HasNoText) {
    EXPECT_THROW(Time(GetParam()).toString(), InfraException);
}

INSTANTIATE_TEST_SUITE_P(Table, TimeOutOfRange,
                         testing::Values(-62'167'219'200'001, 253'402'300'800'000,
                                         std::numeric_limits<std::int64_t>::min(),
                                         std::numeric_limits<std::int64_t>::max()));

struct Fault {
    char const* text;
    char const* what;
    int character;
};

class TimeFaults : public testing::TestWithParam<Fault> {};

TEST_P(TimeFaults, AreToldWithTheirPlaceAndTheRightForm) {
    std::string message = "accepted";
    try {
        Time::fromString(GetParam().text);
    } catch (InfraException const& fault) {
        message = fault.getMessage();
    }
    std::string const begin = "\"" + std::string(GetParam().text) + "\" is no time: ";
    std::string const place = " at character " + std::to_string(GetParam().character) + ". ";
    EXPECT_EQ(0u, message.find(begin + GetParam().what)) << message;
    EXPECT_NE(std::string::npos, message.find(place)) << message;
    EXPECT_NE(std::string::npos, message.find("YYYYMMDD-HH:MM:SS.sss")) << message;
}

INSTANTIATE_TEST_SUITE_P(
    Table, TimeFaults,
    testing::Values(Fault{"", "the text ends too early", 1},
                    Fault{"20261121", "the text ends too early", 9},
                    Fault{"20261121-10:00", "the text ends too early", 15},
                    Fault{"20261121-10:00:00.", "the text ends too early", 19},
                    Fault{"20261121-10:00:00.00", "the text ends too early", 21},
                    Fault{"20261121-10:00:00.0000", "the text is too long", 22},
                    Fault{"20261121-10:00:00Z", "a '.' is missing", 18},
                    Fault{"20261121 10:00:00", "a '-' is missing", 9},
                    Fault{"20261121-10.00:00", "a ':' is missing", 12},
                    Fault{"2026-11-21T10:00:00", "a digit is missing", 5},
                    Fault{"-0261121-10:00:00", "a digit is missing", 1},
                    Fault{"20261121-10:00:0x", "a digit is missing", 17},
                    Fault{"20260021-10:00:00", "the month is not between 1 and 12", 5},
                    Fault{"20261321-10:00:00", "the month is not between 1 and 12", 5},
                    Fault{"20261100-10:00:00", "the day is not between 1 and 31", 7},
                    Fault{"20261132-10:00:00", "the day is not between 1 and 31", 7},
                    Fault{"20261131-10:00:00", "the month has no such day", 7},
                    Fault{"19000229-10:00:00", "the month has no such day", 7},
                    Fault{"20261121-24:00:00", "the hour is not between 0 and 23", 10},
                    Fault{"20261121-10:60:00", "the minute is not between 0 and 59", 13},
                    Fault{"20261121-10:00:60", "the second is not between 0 and 59", 16}));

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
