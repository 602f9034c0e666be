#include "server/sessions/SessionHours.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <ctime>
#include <limits>
#include <stdexcept>

namespace zan {
namespace server {

namespace {

using Keys = std::vector<std::pair<std::string, std::string>>;

long long const secondsPerDay = 24 * 60 * 60;

// The hours and the times of logons may take turns this often until they meet.
int const mostTurns = 64;

std::string valueOf(Keys const& keys, std::string const& name) {
    for (auto const& key : keys)
        if (key.first == name)
            return key.second;
    return std::string();
}

[[noreturn]] void fail(std::string const& key, std::string const& value, std::string const& right) {
    throw std::runtime_error("the key " + key + " is \"" + value + "\" where " + right +
                             " is expected");
}

int timeOf(Keys const& keys, std::string const& name, int otherwise) {
    std::string const value = valueOf(keys, name);
    if (value.empty())
        return otherwise;
    int hour = 0, minute = 0, second = 0, length = 0;
    bool const isRead =
        std::sscanf(value.c_str(), "%2d:%2d:%2d%n", &hour, &minute, &second, &length) == 3;
    bool const isTime = hour >= 0 && hour < 24 && minute >= 0 && minute < 60 && second >= 0 &&
                        second < 60 && static_cast<std::size_t>(length) == value.size();
    if (!isRead || !isTime)
        fail(name, value, "a time of the form HH:MM:SS");
    return (hour * 60 + minute) * 60 + second;
}

int dayOf(Keys const& keys, std::string const& name, int otherwise) {
    std::string const value = valueOf(keys, name);
    if (value.empty())
        return otherwise;
    static char const* const days[] = {"su", "mo", "tu", "we", "th", "fr", "sa"};
    std::string beginning = value.substr(0, 2);
    for (char& each : beginning)
        each = static_cast<char>(std::tolower(static_cast<unsigned char>(each)));
    for (int day = 0; day < 7; ++day)
        if (beginning == days[day])
            return day;
    fail(name, value, "a day of the week");
}

long long floorDivided(long long number, long long by) {
    return number / by - (number % by < 0 ? 1 : 0);
}

long long secondsOf(long long millis) {
    return floorDivided(millis, 1000);
}

// What the local clock is ahead of UTC, in seconds.
long long offsetAt(long long seconds) {
    std::time_t const time = static_cast<std::time_t>(seconds);
    std::tm parts{};
    localtime_r(&time, &parts);
    return parts.tm_gmtoff;
}

// When the local clock first shows this; `wall` counts as if it were UTC.
long long whenLocal(long long wall) {
    long long const before = wall - offsetAt(wall - secondsPerDay);
    long long const after = wall - offsetAt(wall + secondsPerDay);
    bool const isSkipped = offsetAt(before) != wall - before && offsetAt(after) != wall - after;
    return isSkipped || offsetAt(before) == wall - before ? before : after;
}

int weekdayOf(long long day) { // 1970-01-01 was a Thursday
    return static_cast<int>((day % 7 + 11) % 7);
}

} // namespace

long long const SessionHours::never = std::numeric_limits<long long>::max();

SessionHours::SessionHours(Keys const& keys) {
    session_.startTime = timeOf(keys, "StartTime", 0);
    session_.startDay = dayOf(keys, "StartDay", -1);
    session_.endDay = dayOf(keys, "EndDay", -1);
    if (session_.isWeekly() != (session_.endDay >= 0))
        throw std::runtime_error("the keys StartDay and EndDay are needed together");
    session_.endTime = timeOf(keys, "EndTime", session_.isWeekly() ? secondsPerDay - 1 : 0);
    session_.isLocal = valueOf(keys, "UseLocalTime") == "Y";
    logon_ = session_;
    logon_.startTime = timeOf(keys, "LogonTime", session_.startTime);
    logon_.endTime = timeOf(keys, "LogoutTime", session_.endTime);
    logon_.startDay = dayOf(keys, "LogonDay", session_.startDay);
    logon_.endDay = dayOf(keys, "LogoutDay", session_.endDay);
    for (char const* name : {"StartDay", "StartTime", "EndDay", "EndTime", "LogonDay", "LogonTime",
                             "LogoutDay", "LogoutTime", "UseLocalTime"})
        if (!valueOf(keys, name).empty())
            text_ += (text_.empty() ? "" : ", ") + (name + ("=" + valueOf(keys, name)));
    if (opensAt(0) == never)
        throw std::runtime_error(
            "the keys LogonTime and LogoutTime leave no time between StartTime "
            "and EndTime");
}

// The run that begins on this day, or in the week that begins with it.
SessionHours::Run SessionHours::Window::runOf(long long firstDay) const {
    long long begin = (isWeekly() ? firstDay + startDay : firstDay) * secondsPerDay + startTime;
    long long end = (isWeekly() ? firstDay + endDay : firstDay) * secondsPerDay + endTime;
    if (end <= begin)
        end += isWeekly() ? 7 * secondsPerDay : secondsPerDay;
    if (isLocal) {
        begin = whenLocal(begin);
        end = whenLocal(end);
    }
    return {begin * 1000, end * 1000};
}

SessionHours::Run SessionHours::Window::runAt(long long time) const {
    if (isEndless())
        return {std::numeric_limits<long long>::min(), never};
    long long const seconds = secondsOf(time);
    long long day = floorDivided(seconds + (isLocal ? offsetAt(seconds) : 0), secondsPerDay);
    if (isWeekly())
        day -= weekdayOf(day);
    long long const step = isWeekly() ? 7 : 1;
    Run run = runOf(day -= 2 * step);
    while (run.end <= time)
        run = runOf(day += step);
    return run;
}

bool SessionHours::isOpen(long long time) const {
    return session_.runAt(time).begin <= time && logon_.runAt(time).begin <= time;
}

long long SessionHours::opensAt(long long time) const {
    for (int turn = 0; turn < mostTurns; ++turn) {
        long long const next =
            std::max(time, std::max(session_.runAt(time).begin, logon_.runAt(time).begin));
        if (next == time)
            return time;
        time = next;
    }
    return never;
}

long long SessionHours::endsAt(long long time) const {
    return session_.runAt(time).end;
}

std::string SessionHours::closedText(long long time) const {
    return "outside its hours (" + text_ + "); it opens at " + utcText(opensAt(time));
}

std::string utcText(long long time) {
    std::time_t const seconds = static_cast<std::time_t>(secondsOf(time));
    std::tm parts{};
    gmtime_r(&seconds, &parts);
    char text[64];
    std::strftime(text, sizeof text, "%Y%m%d-%H:%M:%S UTC", &parts);
    return text;
}

} // namespace server
} // namespace zan
