#include "infra/Time.h"

#include "infra/InfraException.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdio>
#include <string_view>

namespace infra {
namespace {

using std::chrono::milliseconds;
using std::chrono::sys_time;

constexpr std::string_view WHOLE_SECONDS = "YYYYMMDD-HH:MM:SS";
constexpr std::string_view WITH_MILLIS = "YYYYMMDD-HH:MM:SS.sss";

// The first and the last millisecond that four digits of a year can tell.
constexpr std::int64_t FIRST_MILLIS = -62'167'219'200'000;
constexpr std::int64_t LAST_MILLIS = 253'402'300'799'999;

// Cuts one text into its numbers; every complaint shows the text, the place and the right form.
class Reader {
public:
    explicit Reader(std::string const& text) : text_(text) { checkShape(); }

    Time time() const {
        auto const days = date();
        int const hour = number(9, 2, 0, 23, "hour");
        int const minute = number(12, 2, 0, 59, "minute");
        int const second = number(15, 2, 0, 59, "second");
        int const millis = text_.size() == WITH_MILLIS.size() ? number(18, 3) : 0;
        auto const point = sys_time<milliseconds>(days) + std::chrono::hours(hour) +
                           std::chrono::minutes(minute) + std::chrono::seconds(second) +
                           milliseconds(millis);
        return Time(point.time_since_epoch().count());
    }

private:
    void checkShape() const {
        std::size_t const shared = std::min(text_.size(), WITH_MILLIS.size());
        for (std::size_t at = 0; at < shared; ++at) {
            checkCharacter(at);
        }
        if (text_.size() > WITH_MILLIS.size()) {
            fail("the text is too long", WITH_MILLIS.size());
        }
        if (text_.size() != WITH_MILLIS.size() && text_.size() != WHOLE_SECONDS.size()) {
            fail("the text ends too early", text_.size());
        }
    }

    void checkCharacter(std::size_t at) const {
        char const expected = WITH_MILLIS[at];
        bool const wantsDigit = std::string_view("-:.").find(expected) == std::string_view::npos;
        if (wantsDigit && (text_[at] < '0' || text_[at] > '9')) {
            fail("a digit is missing", at);
        }
        if (!wantsDigit && text_[at] != expected) {
            fail(std::string("a '") + expected + "' is missing", at);
        }
    }

    std::chrono::sys_days date() const {
        using namespace std::chrono;
        auto const y = year(number(0, 4));
        auto const m = month(static_cast<unsigned>(number(4, 2, 1, 12, "month")));
        auto const d = day(static_cast<unsigned>(number(6, 2, 1, 31, "day")));
        if (!(y / m / d).ok()) {
            fail("the month has no such day", 6);
        }
        return y / m / d;
    }

    int number(std::size_t at, std::size_t length) const {
        int value = 0;
        for (char const digit : std::string_view(text_).substr(at, length)) {
            value = value * 10 + (digit - '0');
        }
        return value;
    }

    int number(std::size_t at, std::size_t length, int least, int most, char const* name) const {
        int const value = number(at, length);
        if (value < least || value > most) {
            fail(std::string("the ") + name + " is not between " + std::to_string(least) + " and " +
                     std::to_string(most),
                 at);
        }
        return value;
    }

    [[noreturn]] void fail(std::string const& what, std::size_t at) const {
        throw InfraException("\"" + text_ + "\" is no time: " + what + " at character " +
                             std::to_string(at + 1) + ". Write it as " + std::string(WITH_MILLIS) +
                             " or " + std::string(WHOLE_SECONDS) + ", in UTC.");
    }

    std::string const& text_;
};

} // namespace

Time::Time() = default;

Time::Time(std::int64_t millis) : millis_(millis) {}

Time Time::now() {
    auto const now = std::chrono::system_clock::now();
    return Time(std::chrono::duration_cast<milliseconds>(now.time_since_epoch()).count());
}

Time Time::fromString(std::string const& text) {
    return Reader(text).time();
}

std::string Time::toString() const {
    if (millis_ < FIRST_MILLIS || millis_ > LAST_MILLIS) {
        throw InfraException("The time " + std::to_string(millis_) +
                             " ms cannot be written as text: its year is not between 0000 and "
                             "9999.");
    }
    sys_time<milliseconds> const point{milliseconds(millis_)};
    auto const days = std::chrono::floor<std::chrono::days>(point);
    std::chrono::year_month_day const date(days);
    std::chrono::hh_mm_ss const clock(point - days);
    char text[64];
    std::snprintf(text, sizeof(text), "%04d%02u%02u-%02d:%02d:%02d.%03d", int(date.year()),
                  unsigned(date.month()), unsigned(date.day()), int(clock.hours().count()),
                  int(clock.minutes().count()), int(clock.seconds().count()),
                  int(clock.subseconds().count()));
    return text;
}

std::int64_t Time::getMillis() const {
    return millis_;
}

} // namespace infra
