/// When a session is open, by the keys StartTime, EndTime, StartDay, EndDay, LogonTime, LogoutTime,
/// LogonDay, LogoutDay and UseLocalTime.
///
/// Points in time are milliseconds since 1970-01-01 00:00:00 UTC. Nothing here looks at a clock:
/// the caller tells the time.
///
/// From StartTime to EndTime, its end not included, is one run of the session, each day or, with
/// days of the week, each week. The runs follow each other without a gap where the times and the
/// days are equal; equal times without days are one run that never ends. With UseLocalTime a time
/// of day that the clock skips is that much later, and one that comes twice is the first of both.
///
/// Threads: a value; several threads may ask it.
#ifndef ZANENGINE_SERVER_SESSIONS_SESSIONHOURS_H
#define ZANENGINE_SERVER_SESSIONS_SESSIONHOURS_H

#include <string>
#include <utility>
#include <vector>

namespace zan {
namespace server {

class SessionHours {
public:
    /// Other keys are passed over; without StartTime and EndTime the session is always open. Throws
    /// std::runtime_error naming the key whose value is bad, and when the hours leave no time to be
    /// logged on.
    explicit SessionHours(std::vector<std::pair<std::string, std::string>> const& keys);

    /// May the session be logged on then?
    bool isOpen(long long time) const;

    /// When that is the next time, `time` included.
    long long opensAt(long long time) const;

    /// When the run ends that is on then, or the next one where none is; `never` where it goes on.
    long long endsAt(long long time) const;

    static long long const never;

    /// For people: that the session is closed at this time, its hours, and when it opens.
    std::string closedText(long long time) const;

private:
    struct Run {
        long long begin;
        long long end;
    };

    // From one time of the day, or of the week, to another.
    struct Window {
        int startTime = 0; // seconds
        int endTime = 0;
        int startDay = -1; // 0: Sunday; -1: each day
        int endDay = -1;
        bool isLocal = false;

        bool isWeekly() const { return startDay >= 0; }
        bool isEndless() const { return !isWeekly() && startTime == endTime; }
        Run runAt(long long time) const;
        Run runOf(long long firstDay) const;
    };

    Window session_;
    Window logon_;
    std::string text_;
};

/// `YYYYMMDD-HH:MM:SS UTC`.
std::string utcText(long long time);

} // namespace server
} // namespace zan

#endif
