#include "server/wire/FieldText.h"

#include <algorithm>
#include <charconv>
#include <string>

namespace zan::server {

namespace {

template <class Number>
bool readNumber(std::string_view digits, Number& number) {
    auto const [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    return error == std::errc{} && end == digits.data() + digits.size() && digits.front() != '-';
}

std::string shown(std::string_view token) {
    constexpr std::size_t most = 40;
    std::string text(token.substr(0, most));
    std::ranges::replace_if(
        text, [](char c) { return static_cast<unsigned char>(c) < ' '; }, '?');
    return '"' + text + (token.size() > most ? "...\"" : "\"");
}

} // namespace

FieldCursor::FieldCursor(std::string_view text, char separator, Reading reading)
    : at_(text.data()), end_(text.data() + text.size()), token_(at_), separator_(separator),
      isStrict_(reading == Reading::Strict) {}

bool FieldCursor::readOddTag() {
    char const* const end = findSeparator(token_, end_, separator_);
    char const* const equals = std::find(token_, end, '=');
    if (equals == end) {
        refuse(end, "has no '='");
    } else if (equals != token_ && *token_ != '0' && readNumber({token_, equals}, tag_)) {
        at_ = equals + 1;
        return true;
    } else {
        refuse(end, "has no positive number as its tag");
    }
    dataTag_ = 0;
    passOver(end);
    return false;
}

// Where a data field follows its length, the length decides, not the separator.
char const* FieldCursor::endOfData() const {
    char const* end = nullptr;
    auto const rest = static_cast<std::size_t>(end_ - at_);
    if (dataLength_ <= rest && (dataLength_ == rest || at_[dataLength_] == separator_)) {
        end = at_ + dataLength_;
    } else {
        refuse(at_ - 1, "does not have the length that the field before it tells");
        end = findSeparator(at_, end_, separator_);
    }
    if (end == at_) {
        refuse(end, "has an empty value");
    }
    return end;
}

void FieldCursor::readLength() {
    dataTag_ = dataTagOf(tag_);
    if (dataTag_ != 0 && (value().empty() || !readNumber(value(), dataLength_))) {
        dataTag_ = 0;
        refuse(valueEnd_, "tells a length that is no number");
    }
}

// Shows the token up to `end`.
void FieldCursor::refuse(char const* end, char const* reason) const {
    if (isStrict_) {
        throw MalformedMessage("field " + std::to_string(position_) + " of the message, " +
                               shown({token_, end}) + ", " + reason);
    }
}

std::string_view valueOf(std::string_view message, int tag) {
    FieldCursor cursor(message, fieldSeparator, Reading::Tolerant);
    while (cursor.next()) {
        if (cursor.tag() == tag) {
            return cursor.value();
        }
    }
    return {};
}

} // namespace zan::server
