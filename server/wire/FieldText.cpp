#include "server/wire/FieldText.h"

#include <algorithm>
#include <charconv>
#include <string>

namespace zan::server {

namespace {

struct DataPair {
    int length;
    int data;
};

constexpr DataPair dataPairs[] = {{90, 91},   {93, 89},   {95, 96},   {212, 213}, {348, 349},
                                  {350, 351}, {352, 353}, {354, 355}, {356, 357}, {358, 359},
                                  {360, 361}, {362, 363}, {364, 365}, {445, 446}, {618, 619}};

// A tag that no field has: most tags are told from the table's by their size alone.
bool isOutsideTable(int tag) {
    return tag < 89 || tag > 619;
}

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

int lengthTagOf(int tag) {
    if (isOutsideTable(tag)) {
        return 0;
    }
    auto const* const found = std::ranges::find(dataPairs, tag, &DataPair::data);
    return found == std::end(dataPairs) ? 0 : found->length;
}

int dataTagOf(int tag) {
    if (isOutsideTable(tag)) {
        return 0;
    }
    auto const* const found = std::ranges::find(dataPairs, tag, &DataPair::length);
    return found == std::end(dataPairs) ? 0 : found->data;
}

FieldCursor::FieldCursor(std::string_view text, char separator, Reading reading)
    : rest_(text), separator_(separator), isStrict_(reading == Reading::Strict) {}

bool FieldCursor::next() {
    while (!rest_.empty()) {
        ++position_;
        if (readField(takeToken())) {
            return true;
        }
    }
    return false;
}

std::string_view FieldCursor::takeToken() {
    std::size_t const end = endOfToken();
    std::string_view const token = rest_.substr(0, end);
    rest_.remove_prefix(std::min(end + 1, rest_.size()));
    return token;
}

// Where a data field follows its length, the length decides, not the separator.
std::size_t FieldCursor::endOfToken() const {
    std::size_t const equals = dataTag_ == 0 ? std::string_view::npos : rest_.find('=');
    int tag = 0;
    if (equals != std::string_view::npos && equals > 0 &&
        readNumber(rest_.substr(0, equals), tag) && tag == dataTag_ &&
        dataLength_ < rest_.size() - equals) {
        std::size_t const end = equals + 1 + dataLength_;
        if (end == rest_.size() || rest_[end] == separator_) {
            return end;
        }
        refuse(rest_.substr(0, equals), "does not have the length that the field before it tells");
    }
    return std::min(rest_.find(separator_), rest_.size());
}

bool FieldCursor::readField(std::string_view token) {
    std::size_t const equals = token.find('=');
    if (equals == std::string_view::npos) {
        return refuse(token, "has no '='");
    }
    if (!readTag(token.substr(0, equals))) {
        return refuse(token, "has no positive number as its tag");
    }
    field_.value = token.substr(equals + 1);
    if (field_.value.empty()) {
        refuse(token, "has an empty value");
    }
    dataTag_ = dataTagOf(field_.tag);
    if (dataTag_ != 0 && (field_.value.empty() || !readNumber(field_.value, dataLength_))) {
        dataTag_ = 0;
        refuse(token, "tells a length that is no number");
    }
    return true;
}

bool FieldCursor::readTag(std::string_view digits) {
    return !digits.empty() && digits.front() != '0' && readNumber(digits, field_.tag);
}

bool FieldCursor::refuse(std::string_view token, char const* reason) const {
    if (isStrict_) {
        throw MalformedMessage("field " + std::to_string(position_) + " of the message, " +
                               shown(token) + ", " + reason);
    }
    return false;
}

std::string_view valueOf(std::string_view message, int tag) {
    FieldCursor cursor(message, fieldSeparator, Reading::Tolerant);
    while (cursor.next()) {
        if (cursor.field().tag == tag) {
            return cursor.field().value;
        }
    }
    return {};
}

} // namespace zan::server
