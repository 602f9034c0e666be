#include "server/sessions/NumberRanges.h"

#include <algorithm>
#include <iterator>

namespace zan {
namespace server {

std::size_t const NumberRanges::mostRanges;

void NumberRanges::add(NumberRange range) {
    auto each = ranges_.upper_bound(range.first);
    if (each != ranges_.begin() && std::prev(each)->second >= range.first - 1)
        --each;
    while (each != ranges_.end() && each->first - 1 <= range.last) {
        range.first = std::min(range.first, each->first);
        range.last = std::max(range.last, each->second);
        each = ranges_.erase(each);
    }
    ranges_[range.first] = range.last;
    if (ranges_.size() > mostRanges) {
        auto const second = std::next(ranges_.begin());
        ranges_.begin()->second = second->second;
        ranges_.erase(second);
    }
}

void NumberRanges::remove(NumberRange range) {
    auto each = ranges_.upper_bound(range.first);
    if (each != ranges_.begin() && std::prev(each)->second >= range.first)
        --each;
    while (each != ranges_.end() && each->first <= range.last) {
        NumberRange const cut = {each->first, each->second};
        each = ranges_.erase(each);
        if (cut.first < range.first)
            ranges_[cut.first] = range.first - 1;
        if (cut.last > range.last)
            ranges_[range.last + 1] = cut.last;
    }
}

NumberRange NumberRanges::front() const {
    return {ranges_.begin()->first, ranges_.begin()->second};
}

bool NumberRanges::has(int number) const {
    auto const next = ranges_.upper_bound(number);
    return next != ranges_.begin() && std::prev(next)->second >= number;
}

} // namespace server
} // namespace zan
