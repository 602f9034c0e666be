#include "server/sessions/FixScanner.h"

#include "server/sessions/StandardTags.h"

#include <algorithm>

namespace zan {
namespace server {

namespace {

char const endOfField = '\x01';
std::size_t const mostDigits = 10;
long long const largestTag = 0x7ffffff0;

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

} // namespace

int const FixScanner::noNumber;

bool FixScanner::next() {
    if (position_ >= message_.size())
        return false;
    std::size_t const end = std::min(message_.find(endOfField, position_), message_.size());
    fault_ = FieldFault::none;
    valueStart_ = valueEnd_ = end;
    if (readTag(end)) {
        readValue(end);
    } else {
        fault_ = FieldFault::noTag;
        dataTag_ = 0;
    }
    position_ = std::min(std::max(end, valueEnd_) + 1, message_.size());
    if (fault_ == FieldFault::none)
        noteLength();
    return true;
}

bool FixScanner::nextGood() {
    while (next())
        if (fault_ == FieldFault::none)
            return true;
    return false;
}

// False for what is no tag, though it may be a number: 0, one below it, or one with zeros before.
bool FixScanner::readTag(std::size_t end) {
    bool const isNegative = message_[position_] == '-';
    std::size_t const first = position_ + (isNegative ? 1 : 0);
    std::size_t i = first;
    long long number = 0;
    for (; i < end && isDigit(message_[i]) && i - first < mostDigits; ++i)
        number = number * 10 + (message_[i] - '0');
    bool const isNumber = i > first && i < end && message_[i] == '=' && number <= largestTag;
    tag_ = isNumber ? static_cast<int>(isNegative ? -number : number) : noNumber;
    if (tag_ <= 0 || message_[first] == '0')
        return false;
    valueStart_ = i + 1;
    return true;
}

void FixScanner::readValue(std::size_t end) {
    valueEnd_ = end;
    if (tag_ == dataTag_ && dataLength_ < message_.size() - valueStart_) {
        std::size_t const told = valueStart_ + dataLength_;
        if (message_[told] == endOfField)
            valueEnd_ = told;
        else
            fault_ = FieldFault::wrongLength;
    }
    dataTag_ = 0;
    if (valueEnd_ == valueStart_)
        fault_ = FieldFault::noValue;
    else if (valueEnd_ == message_.size()) // the last separator is not there
        fault_ = FieldFault::noTag;
}

void FixScanner::noteLength() {
    dataTag_ = dataTagOf(tag_);
    dataLength_ = 0;
    for (std::size_t i = valueStart_; dataTag_ != 0 && i < valueEnd_; ++i) {
        if (!isDigit(message_[i]) || dataLength_ > message_.size())
            dataTag_ = 0;
        else
            dataLength_ = dataLength_ * 10 + static_cast<std::size_t>(message_[i] - '0');
    }
}

std::string fixValue(std::string const& message, int tag) {
    FixScanner scanner(message);
    while (scanner.nextGood())
        if (scanner.tag() == tag)
            return scanner.value();
    return std::string();
}

} // namespace server
} // namespace zan
