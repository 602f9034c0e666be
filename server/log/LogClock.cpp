#include "server/log/LogClock.h"

#include "infra/Time.h"

#include <algorithm>

namespace zan::server {

namespace {

constexpr long long firstMillis = -62'167'219'200'000;
constexpr long long lastMillis = 253'402'300'799'999;

} // namespace

long long nowMillis() {
    return infra::Time::now().getMillis();
}

std::string timeText(long long millis) {
    return infra::Time(std::clamp(millis, firstMillis, lastMillis)).toString();
}

long long millisOf(std::string_view text) {
    return infra::Time::fromString(std::string(text)).getMillis();
}

std::string const& TimeWriter::text(long long millis) {
    long long const second = millis / 1000;
    if (second != second_ || text_.empty() || millis < 0) {
        text_ = timeText(millis);
        second_ = second;
        return text_;
    }
    int rest = static_cast<int>(millis % 1000);
    for (std::size_t at = text_.size(); at > text_.size() - 3; rest /= 10) {
        text_[--at] = static_cast<char>('0' + rest % 10);
    }
    return text_;
}

} // namespace zan::server
