#include "apps/zan/LogTimes.h"

#include "apps/zan/ExitCodes.h"
#include "apps/zan/Terminal.h"
#include "infra/InfraException.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <string_view>

namespace zan::cli {

namespace {

constexpr std::size_t dayLength = 8;
// A time that fills up one that is told in part.
constexpr std::string_view earliest = "00000101-00:00:00.000";

[[noreturn]] void fail(std::string const& text) {
    throw UsageError("\"" + printable(text) + "\" is no time; " + timeForms + " would be right");
}

bool isDecimalDigit(char c) {
    return c >= '0' && c <= '9';
}

// Whether the text is the beginning of something like the shape, in which 0 stands for any digit.
bool hasShape(std::string_view text, std::string_view shape) {
    return text.size() <= shape.size() &&
           std::ranges::equal(text, shape.substr(0, text.size()), [](char given, char wanted) {
               return wanted == '0' ? isDecimalDigit(given) : given == wanted;
           });
}

// Two digits stand together, but for those behind the point.
bool isLogTime(std::string_view text) {
    std::size_t const length = text.size();
    bool const isWhole = length == dayLength || length == 11 || length == 14 || length == 17 ||
                         (length > 18 && length <= earliest.size());
    return isWhole && hasShape(text, "00000000-00:00:00.000");
}

bool isRelative(std::string_view text) {
    return text.size() > 2 && text.front() == '-' &&
           std::string_view("smhd").find(text.back()) != std::string_view::npos &&
           std::ranges::all_of(text.substr(1, text.size() - 2), isDecimalDigit);
}

std::string before(infra::Time now, std::string const& text) {
    constexpr std::int64_t second = 1000;
    std::int64_t const unit = text.back() == 's'   ? second
                              : text.back() == 'm' ? 60 * second
                              : text.back() == 'h' ? 3600 * second
                                                   : 86400 * second;
    constexpr std::int64_t longest = 1'000'000;
    std::int64_t count = 0;
    auto const [end, error] = std::from_chars(text.data() + 1, text.data() + text.size(), count);
    if (error != std::errc() || count > longest) {
        fail(text);
    }
    return infra::Time(now.getMillis() - count * unit).toString();
}

// Minutes east of Greenwich of `+01:00`.
std::int64_t minutesOf(std::string_view offset) {
    auto const number = [&](std::size_t at) {
        return (offset[at] - '0') * 10 + (offset[at + 1] - '0');
    };
    std::int64_t const minutes = number(1) * 60 + number(4);
    return offset.front() == '-' ? -minutes : minutes;
}

std::string moved(std::string const& time, std::int64_t minutes) {
    infra::Time const whole =
        infra::Time::fromString(time + std::string(earliest.substr(time.size())));
    return infra::Time(whole.getMillis() - minutes * 60'000).toString().substr(0, time.size());
}

// `2026-11-21T09:30+01:00` in the log's form; empty when it is none of this kind.
std::string fromIso(std::string text) {
    constexpr std::string_view date = "0000-00-00";
    if (text.size() < date.size() || !hasShape(text.substr(0, date.size()), date)) {
        return {};
    }
    std::int64_t minutes = 0;
    constexpr std::size_t offsetLength = 6;
    std::size_t const offset = text.size() - std::min(text.size(), offsetLength);
    if (text.ends_with('Z')) {
        text.pop_back();
    } else if (text.size() >= date.size() + offsetLength &&
               (hasShape(text.substr(offset), "+00:00") ||
                hasShape(text.substr(offset), "-00:00"))) {
        minutes = minutesOf(text.substr(offset));
        text.resize(offset);
    }
    std::string time = text.substr(0, 4) + text.substr(5, 2) + text.substr(8, 2);
    if (text.size() > date.size()) {
        bool const isParted = text[date.size()] == 'T' || text[date.size()] == ' ';
        time += (isParted ? "-" : "?") + text.substr(date.size() + 1);
    }
    return isLogTime(time) ? moved(time, minutes) : time;
}

} // namespace

std::string timeBeginning(std::string const& text, infra::Time now) {
    if (text.empty()) {
        return text;
    }
    if (isRelative(text)) {
        return before(now, text);
    }
    try {
        std::string const iso = fromIso(text);
        bool const isOfToday = text.find(':') == 2;
        std::string time = !iso.empty() ? iso
                           : isOfToday  ? now.toString().substr(0, dayLength + 1) + text
                                        : text;
        if (isLogTime(time)) {
            moved(time, 0); // There is such a day, and such an hour.
            return time;
        }
    } catch (InfraException const&) {
        // Told below.
    }
    fail(text);
}

} // namespace zan::cli
