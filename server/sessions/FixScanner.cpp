#include "server/sessions/FixScanner.h"

namespace zan {
namespace server {

int FixScanner::dataTagOf(int lengthTag) {
    switch (lengthTag) {
    case 93: // SignatureLength is the one whose data has the lower number
        return 89;
    case 90:
    case 95:
    case 212:
    case 348:
    case 350:
    case 352:
    case 354:
    case 356:
    case 358:
    case 360:
    case 362:
    case 364:
    case 445:
    case 618:
        return lengthTag + 1;
    default:
        return 0;
    }
}

bool FixScanner::next() {
    if (position_ >= message_.size() || malformed_)
        return false;
    malformed_ = !readTag() || !readValue();
    if (!malformed_)
        noteLength();
    return !malformed_;
}

bool FixScanner::readTag() {
    int const largestTenth = 214748363;
    int tag = 0;
    std::size_t i = position_;
    for (; i < message_.size() && message_[i] >= '0' && message_[i] <= '9'; ++i) {
        if (tag > largestTenth)
            return false;
        tag = tag * 10 + (message_[i] - '0');
    }
    tag_ = tag;
    valueStart_ = i + 1;
    return tag > 0 && message_[position_] != '0' && i < message_.size() && message_[i] == '=';
}

bool FixScanner::readValue() {
    if (tag_ == dataTag_ && dataLength_ < message_.size() - valueStart_) {
        valueEnd_ = valueStart_ + dataLength_;
        if (message_[valueEnd_] != '\x01')
            return false;
    } else {
        valueEnd_ = message_.find('\x01', valueStart_);
        if (valueEnd_ == std::string::npos)
            return false;
    }
    position_ = valueEnd_ + 1;
    return valueEnd_ > valueStart_;
}

void FixScanner::noteLength() {
    dataTag_ = dataTagOf(tag_);
    dataLength_ = 0;
    for (std::size_t i = valueStart_; dataTag_ != 0 && i < valueEnd_; ++i) {
        bool const digit = message_[i] >= '0' && message_[i] <= '9';
        if (!digit || dataLength_ > message_.size())
            dataTag_ = 0;
        else
            dataLength_ = dataLength_ * 10 + static_cast<std::size_t>(message_[i] - '0');
    }
}

std::string fixValue(std::string const& message, int tag) {
    FixScanner scanner(message);
    while (scanner.next())
        if (scanner.tag() == tag)
            return scanner.value();
    return std::string();
}

} // namespace server
} // namespace zan
