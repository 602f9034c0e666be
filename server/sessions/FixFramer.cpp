#include "server/sessions/FixFramer.h"

#include "server/sessions/FixScanner.h"

#include <algorithm>
#include <cstdio>

namespace zan {
namespace server {

namespace {
// "8=FIXT.1.1|9=12345678|" is 23 bytes; a head that is longer is none.
std::size_t const longestHead = 40;
// The room for a giant message is given back after it.
std::size_t const mostKeptEmpty = 1024 * 1024;
char const soh = '\x01';
// "8=" alone stands in many a field.
std::string const firstBytes = "8=FIX";
} // namespace

std::size_t const FixFramer::longestBody;
std::size_t const FixFramer::mostShown;

void FixFramer::append(char const* bytes, std::size_t count) {
    // Moving the rest to the front only when it is the smaller part keeps the work linear.
    if (begin_ == buffer_.size() && buffer_.capacity() > mostKeptEmpty) {
        clear();
    } else if (begin_ > buffer_.size() / 2) {
        buffer_.erase(0, begin_);
        begin_ = 0;
    }
    buffer_.append(bytes, count);
}

void FixFramer::clear() {
    std::string().swap(buffer_);
    begin_ = 0;
}

FixFramer::Result FixFramer::next(std::string& message, std::string& fault) {
    std::size_t const left = buffer_.size() - begin_;
    if (buffer_.compare(begin_, firstBytes.size(), firstBytes, 0, left) != 0)
        return dropToNext(begin_, "no message begins here", message, fault);
    std::size_t const versionEnd = fieldEnd(begin_);
    std::size_t const lengthEnd =
        versionEnd == std::string::npos ? std::string::npos : fieldEnd(versionEnd + 1);
    if (lengthEnd == std::string::npos)
        return left < longestHead
                   ? Result::incomplete
                   : dropToNext(begin_ + 2, "BeginString (8) and BodyLength (9) do not end",
                                message, fault);
    std::size_t length = 0;
    if (!parseLength(versionEnd + 1, lengthEnd, length))
        return dropToNext(begin_ + 2, "the second field is no BodyLength (9) that can be right",
                          message, fault);
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

// The last bytes may be the first ones of the next message.
FixFramer::Result FixFramer::dropToNext(std::size_t from, std::string const& why,
                                        std::string& dropped, std::string& fault) {
    std::size_t next = buffer_.find(firstBytes, from);
    if (next == std::string::npos) {
        next = std::max(from, buffer_.size() - std::min(buffer_.size(), firstBytes.size() - 1));
        while (buffer_.compare(next, std::string::npos, firstBytes, 0, buffer_.size() - next) != 0)
            ++next;
    }
    return drop(next - begin_, why, dropped, fault);
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

// Where the length that was told leads to no trailer, the first one there is.
std::size_t FixFramer::trailerFrom(std::size_t bodyStart, std::size_t told) const {
    if (buffer_[told - 1] == soh && buffer_.compare(told, 3, "10=") == 0)
        return told;
    std::size_t const found = buffer_.find("\x01"
                                           "10=",
                                           bodyStart - 1);
    return found == std::string::npos ? told : found + 1;
}

FixFramer::Result FixFramer::takeFrame(std::size_t bodyStart, std::size_t bodyLength,
                                       std::string& message, std::string& fault) {
    std::size_t trailer = bodyStart + bodyLength;
    std::size_t end = trailer + trailerLength;
    if (buffer_.size() < end)
        return Result::incomplete;
    if (!isStrict_) {
        trailer = trailerFrom(bodyStart, trailer);
        end = trailer + trailerLength;
        if (buffer_.size() < end)
            return Result::incomplete;
    }
    if (buffer_.compare(trailer, 3, "10=") != 0 || buffer_[end - 1] != soh ||
        buffer_[trailer - 1] != soh)
        return dropToNext(begin_ + 2,
                          "no CheckSum (10) where BodyLength (9) says that the body ends", message,
                          fault);
    unsigned sum = 0;
    for (std::size_t i = begin_; i < trailer; ++i)
        sum += static_cast<unsigned char>(buffer_[i]);
    char right[4];
    std::snprintf(right, sizeof right, "%03u", sum % 256);
    if (isStrict_ && buffer_.compare(trailer + 3, 3, right) != 0)
        return drop(end - begin_,
                    "CheckSum (10) is " + buffer_.substr(trailer + 3, 3) + " where " + right +
                        " is right",
                    message, fault);
    message.assign(buffer_, begin_, end - begin_);
    begin_ = end;
    return Result::message;
}

FixFramer::Result FixFramer::drop(std::size_t count, std::string const& why, std::string& dropped,
                                  std::string& fault) {
    if (count == 0)
        return Result::incomplete;
    fault = std::to_string(count) + " bytes dropped: " + why;
    dropped.assign(buffer_, begin_, std::min(count, mostShown));
    begin_ += count;
    return Result::garbage;
}

} // namespace server
} // namespace zan
