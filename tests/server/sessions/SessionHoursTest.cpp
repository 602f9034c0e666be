// When a session is open: days and weeks, both sides of a border, local time over a change of the
// clock.
#include "server/sessions/SessionHours.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <stdexcept>

namespace {

using namespace zan::server;

using HourKeys = std::vector<std::pair<std::string, std::string>>;

// `YYYYMMDD-HH:MM:SS` of UTC.
long long at(std::string const& utc) {
    std::tm parts{};
    std::sscanf(utc.c_str(), "%4d%2d%2d-%2d:%2d:%2d", &parts.tm_year, &parts.tm_mon, &parts.tm_mday,
                &parts.tm_hour, &parts.tm_min, &parts.tm_sec);
    parts.tm_year -= 1900;
    parts.tm_mon -= 1;
    return static_cast<long long>(timegm(&parts)) * 1000;
}

HourKeys const officeHours = {{"StartTime", "08:00:00"}, {"EndTime", "17:00:00"}};
HourKeys const overnight = {{"StartTime", "22:00:00"}, {"EndTime", "05:30:00"}};
HourKeys const weekly = {
    {"StartTime", "21:00:00"}, {"EndTime", "20:00:00"}, {"StartDay", "Sunday"}, {"EndDay", "fr"}};
HourKeys const allWeek = {{"StartTime", "17:00:00"},
                          {"EndTime", "17:00:00"},
                          {"StartDay", "Saturday"},
                          {"EndDay", "Saturday"}};
HourKeys const acrossTheWeek = {{"StartTime", "10:00:00"},
                                {"EndTime", "09:00:00"},
                                {"StartDay", "Thursday"},
                                {"EndDay", "Tuesday"}};

struct OpenCase {
    char const* name;
    HourKeys keys;
    char const* time;
    char const* opens; // the same when it is open
    char const* ends;
};

void PrintTo(OpenCase const& tested, std::ostream* stream) {
    *stream << tested.name;
}

class Hours : public testing::TestWithParam<OpenCase> {};

TEST_P(Hours, TellWhenTheSessionOpensAndEnds) {
    OpenCase const& tested = GetParam();
    SessionHours const hours(tested.keys);
    long long const time = at(tested.time);
    EXPECT_EQ(utcText(hours.opensAt(time)), std::string(tested.opens) + " UTC");
    EXPECT_EQ(utcText(hours.endsAt(time)), std::string(tested.ends) + " UTC");
    EXPECT_EQ(hours.isOpen(time), std::string(tested.opens) == tested.time);
}

// 2026-11-22 is a Sunday.
INSTANTIATE_TEST_SUITE_P(
    OfDaysAndWeeks, Hours,
    testing::Values(OpenCase{"BeforeTheStart", officeHours, "20261123-07:59:59",
                             "20261123-08:00:00", "20261123-17:00:00"},
                    OpenCase{"AtTheStart", officeHours, "20261123-08:00:00", "20261123-08:00:00",
                             "20261123-17:00:00"},
                    OpenCase{"BeforeTheEnd", officeHours, "20261123-16:59:59", "20261123-16:59:59",
                             "20261123-17:00:00"},
                    OpenCase{"AtTheEnd", officeHours, "20261123-17:00:00", "20261124-08:00:00",
                             "20261124-17:00:00"},
                    OpenCase{"EndOfTheYear", officeHours, "20261231-23:00:00", "20270101-08:00:00",
                             "20270101-17:00:00"},
                    OpenCase{"BeforeMidnight", overnight, "20261123-23:59:59", "20261123-23:59:59",
                             "20261124-05:30:00"},
                    OpenCase{"AfterMidnight", overnight, "20261124-00:00:00", "20261124-00:00:00",
                             "20261124-05:30:00"},
                    OpenCase{"ByDay", overnight, "20261124-12:00:00", "20261124-22:00:00",
                             "20261125-05:30:00"},
                    OpenCase{"LeapDay", overnight, "20280228-23:00:00", "20280228-23:00:00",
                             "20280229-05:30:00"},
                    OpenCase{"SundayBeforeTheWeek", weekly, "20261122-20:59:59",
                             "20261122-21:00:00", "20261127-20:00:00"},
                    OpenCase{"WithinTheWeek", weekly, "20261125-20:30:00", "20261125-20:30:00",
                             "20261127-20:00:00"},
                    OpenCase{"EndOfTheWeek", weekly, "20261127-20:00:00", "20261129-21:00:00",
                             "20261204-20:00:00"},
                    OpenCase{"FridayOfAllWeek", allWeek, "20261127-12:00:00", "20261127-12:00:00",
                             "20261128-17:00:00"},
                    OpenCase{"BorderOfAllWeek", allWeek, "20261128-17:00:00", "20261128-17:00:00",
                             "20261205-17:00:00"},
                    OpenCase{"OpenAcrossTheWeek", acrossTheWeek, "20261122-12:00:00",
                             "20261122-12:00:00", "20261124-09:00:00"},
                    OpenCase{"ClosedAcrossTheWeek", acrossTheWeek, "20261125-12:00:00",
                             "20261126-10:00:00", "20261201-09:00:00"}),
    [](testing::TestParamInfo<OpenCase> const& tested) { return std::string(tested.param.name); });

TEST(SessionHours, AreEndlessWithEqualTimes) {
    for (char const* time : {"00:00:00", "17:30:00"}) {
        SessionHours const hours({{"StartTime", time}, {"EndTime", time}});
        for (long long day = at("20261101-00:00:00"); day < at("20270101-00:00:00");
             day += 24 * 3600 * 1000 - 1) {
            EXPECT_TRUE(hours.isOpen(day));
            EXPECT_EQ(hours.opensAt(day), day);
            EXPECT_EQ(hours.endsAt(day), SessionHours::never);
        }
    }
    EXPECT_EQ(SessionHours({}).endsAt(0), SessionHours::never);
}

TEST(SessionHours, AreThoseInWhichALogonMayStandToo) {
    HourKeys keys = weekly;
    keys.insert(keys.end(), {{"LogonTime", "07:00:00"},
                             {"LogoutTime", "18:00:00"},
                             {"LogonDay", "Monday"},
                             {"LogoutDay", "Friday"}});
    SessionHours const hours(keys);
    EXPECT_EQ(utcText(hours.opensAt(at("20261122-21:30:00"))), "20261123-07:00:00 UTC");
    EXPECT_TRUE(hours.isOpen(at("20261127-17:59:59")));
    EXPECT_FALSE(hours.isOpen(at("20261127-18:00:00")));
    EXPECT_EQ(utcText(hours.endsAt(at("20261127-18:00:00"))), "20261127-20:00:00 UTC");
    EXPECT_EQ(utcText(hours.opensAt(at("20261127-18:00:00"))), "20261130-07:00:00 UTC");
}

TEST(SessionHours, TellWhenTheyOpen) {
    EXPECT_EQ(SessionHours(officeHours).closedText(at("20261123-17:00:00")),
              "outside its hours (StartTime=08:00:00, EndTime=17:00:00); it opens at "
              "20261124-08:00:00 UTC");
}

struct BadHours {
    HourKeys keys;
    char const* text;
};

TEST(SessionHours, NameTheKeyThatIsBad) {
    BadHours const cases[] = {
        {{{"StartTime", "8 o'clock"}},
         "the key StartTime is \"8 o'clock\" where a time of the form HH:MM:SS is expected"},
        {{{"EndTime", "24:00:00"}},
         "the key EndTime is \"24:00:00\" where a time of the form HH:MM:SS is expected"},
        {{{"StartDay", "someday"}, {"EndDay", "Friday"}},
         "the key StartDay is \"someday\" where a day of the week is expected"},
        {{{"StartDay", "Monday"}}, "the keys StartDay and EndDay are needed together"},
        {{{"StartTime", "08:00:00"},
          {"EndTime", "17:00:00"},
          {"LogonTime", "18:00:00"},
          {"LogoutTime", "19:00:00"}},
         "the keys LogonTime and LogoutTime leave no time between StartTime and EndTime"},
    };
    for (BadHours const& each : cases) {
        try {
            SessionHours const hours(each.keys);
            FAIL() << each.text;
        } catch (std::runtime_error const& error) {
            EXPECT_STREQ(error.what(), each.text);
        }
    }
}

// Local time of a place whose clock is put forward on 2027-03-28 and back on 2026-10-25, both at
// 01:00 UTC.
class LocalHours : public testing::Test {
protected:
    void SetUp() override {
        setenv("TZ", "CET-1CEST,M3.5.0/2,M10.5.0/3", 1);
        tzset();
    }
    void TearDown() override {
        unsetenv("TZ");
        tzset();
    }
    static SessionHours hours(char const* start, char const* end) {
        return SessionHours({{"StartTime", start}, {"EndTime", end}, {"UseLocalTime", "Y"}});
    }
};

TEST_F(LocalHours, FollowTheLocalClock) {
    SessionHours const day = hours("08:00:00", "17:00:00");
    EXPECT_EQ(utcText(day.opensAt(at("20261024-00:00:00"))), "20261024-06:00:00 UTC");
    EXPECT_EQ(utcText(day.opensAt(at("20261025-00:00:00"))), "20261025-07:00:00 UTC");
    EXPECT_EQ(utcText(day.endsAt(at("20261025-00:00:00"))), "20261025-16:00:00 UTC");
    EXPECT_EQ(utcText(day.opensAt(at("20270328-00:00:00"))), "20270328-06:00:00 UTC");
}

TEST_F(LocalHours, AreOneRunOverANightThatIsLongerOrShorter) {
    SessionHours const night = hours("22:00:00", "06:00:00");
    EXPECT_TRUE(night.isOpen(at("20261024-20:00:00")));
    EXPECT_EQ(utcText(night.endsAt(at("20261024-20:00:00"))), "20261025-05:00:00 UTC");
    EXPECT_EQ(utcText(night.endsAt(at("20261025-04:59:59"))), "20261025-05:00:00 UTC");
    EXPECT_TRUE(night.isOpen(at("20270327-21:00:00")));
    EXPECT_EQ(utcText(night.endsAt(at("20270327-21:00:00"))), "20270328-04:00:00 UTC");
}

TEST_F(LocalHours, CountATimeThatComesTwiceOnce) {
    SessionHours const early = hours("02:30:00", "10:00:00");
    EXPECT_EQ(utcText(early.opensAt(at("20261025-00:00:00"))), "20261025-00:30:00 UTC");
    EXPECT_TRUE(early.isOpen(at("20261025-01:10:00")));
    SessionHours const late = hours("10:00:00", "02:30:00");
    EXPECT_FALSE(late.isOpen(at("20261025-00:30:00")));
    EXPECT_FALSE(late.isOpen(at("20261025-01:10:00")));
}

TEST_F(LocalHours, TakeATimeThatIsSkippedThatMuchLater) {
    SessionHours const early = hours("02:30:00", "10:00:00");
    EXPECT_EQ(utcText(early.opensAt(at("20270328-00:00:00"))), "20270328-01:30:00 UTC");
    SessionHours const late = hours("10:00:00", "02:30:00");
    EXPECT_TRUE(late.isOpen(at("20270328-01:29:59")));
    EXPECT_FALSE(late.isOpen(at("20270328-01:30:00")));
}

TEST_F(LocalHours, HaveOneBorderADayThroughoutTheYear) {
    for (SessionHours const& each :
         {hours("02:30:00", "02:00:00"), hours("01:00:00", "00:59:59"),
          hours("03:00:00", "02:59:59"), hours("00:00:00", "23:59:59")}) {
        int borders = 0;
        for (long long time = at("20260601-12:00:00"); time < at("20270601-12:00:00");
             time = each.endsAt(time))
            ++borders;
        EXPECT_NEAR(borders, 366, 1);
    }
}

} // namespace
