#include "server/sessions/FixFramer.h"

#include <algorithm>
#include <cstdio>

namespace zan {
namespace server {

namespace {
// "8=FIXT.1.1|9=12345678|" is 23 bytes; a head that is longer is none.
std::size_t const longestHead = 40;
std::size_t const trailerLength = 7; // 10=123|
char const soh = '\x01';
} // namespace

std::size_t const FixFramer::longestBody;

void FixFramer::append(char const* bytes, std::size_t count) {
    // Moving the rest to the front only when it is the smaller part keeps the work linear.
    if (begin_ > buffer_.size() / 2) {
        buffer_.erase(0, begin_);
        begin_ = 0;
    }
    buffer_.append(bytes, count);
}

void FixFramer::clear() {
    buffer_.clear();
    begin_ = 0;
}

FixFramer::Result FixFramer::next(std::string& message, std::string& fault) {
    std::size_t const left = buffer_.size() - begin_;
    if (buffer_.compare(begin_, std::min<std::size_t>(left, 2),
                        "8=", std::min<std::size_t>(left, 2)))
        return dropToBegin(fault);
    std::size_t const versionEnd = fieldEnd(begin_);
    std::size_t const lengthEnd =
        versionEnd == std::string::npos ? std::string::npos : fieldEnd(versionEnd + 1);
    if (lengthEnd == std::string::npos)
        return incompleteHead(fault);
    std::size_t length = 0;
    if (!parseLength(versionEnd + 1, lengthEnd, length))
        return drop(2, "the second field is no BodyLength (9) that can be right", fault);
    return takeFrame(lengthEnd + 1, length, message, fault);
}

// Looks no further than a head can reach: searching all that is there would make the work
// quadratic for bytes that hold many beginnings and no end.
std::size_t FixFramer::fieldEnd(std::size_t start) const {
    std::size_t const limit = std::min(buffer_.size(), begin_ + longestHead);
    for (std::size_t i = start; i < limit; ++i)
        if (buffer_[i] == soh)
            return i;
    return std::string::npos;
}

FixFramer::Result FixFramer::dropToBegin(std::string& fault) {
    // A message begins where "8=" begins a field; the last byte may be the first half of it.
    std::size_t next = buffer_.find("8=", begin_);
    if (next == std::string::npos)
        next = buffer_.back() == '8' ? buffer_.size() - 1 : buffer_.size();
    return drop(next - begin_, "no message begins here", fault);
}

FixFramer::Result FixFramer::incompleteHead(std::string& fault) {
    if (buffer_.size() - begin_ < longestHead)
        return Result::incomplete;
    return drop(2, "BeginString (8) and BodyLength (9) do not end", fault);
}

bool FixFramer::parseLength(std::size_t lengthStart, std::size_t lengthEnd,
                            std::size_t& length) const {
    if (buffer_.compare(lengthStart, 2, "9=") != 0 || lengthEnd - lengthStart < 3)
        return false;
    length = 0;
    for (std::size_t i = lengthStart + 2; i < lengthEnd; ++i) {
        if (buffer_[i] < '0' || buffer_[i] > '9')
            return false;
        length = length * 10 + static_cast<std::size_t>(buffer_[i] - '0');
        if (length > longestBody)
            return false;
    }
    return length > 0;
}

FixFramer::Result FixFramer::takeFrame(std::size_t bodyStart, std::size_t bodyLength,
                                       std::string& message, std::string& fault) {
    std::size_t const trailer = bodyStart + bodyLength;
    std::size_t const end = trailer + trailerLength;
    if (buffer_.size() < end)
        return Result::incomplete;
    if (buffer_.compare(trailer, 3, "10=") != 0 || buffer_[end - 1] != soh ||
        buffer_[trailer - 1] != soh)
        return drop(2, "no CheckSum (10) where BodyLength (9) says that the body ends", fault);
    unsigned sum = 0;
    for (std::size_t i = begin_; i < trailer; ++i)
        sum += static_cast<unsigned char>(buffer_[i]);
    char right[4];
    std::snprintf(right, sizeof right, "%03u", sum % 256);
    if (buffer_.compare(trailer + 3, 3, right) != 0)
        return drop(end - begin_,
                    "CheckSum (10) is " + buffer_.substr(trailer + 3, 3) + " where " + right +
                        " is right",
                    fault);
    message.assign(buffer_, begin_, end - begin_);
    begin_ = end;
    return Result::message;
}

FixFramer::Result FixFramer::drop(std::size_t count, std::string const& why, std::string& fault) {
    if (count == 0)
        return Result::incomplete;
    fault = std::to_string(count) + " bytes dropped: " + why;
    begin_ += count;
    return Result::garbage;
}

} // namespace server
} // namespace zan
