#include "server/wire/FieldText.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cstring>
#include <string>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace zan::server {

namespace {

struct DataPair {
    int length;
    int data;
};

constexpr DataPair dataPairs[] = {{90, 91},   {93, 89},   {95, 96},   {212, 213}, {348, 349},
                                  {350, 351}, {352, 353}, {354, 355}, {356, 357}, {358, 359},
                                  {360, 361}, {362, 363}, {364, 365}, {445, 446}, {618, 619}};

constexpr std::size_t behindPairs = 620;

// The other tag of a pair, by a tag: 0 for all others.
using Partners = std::array<short, behindPairs>;

constexpr Partners partnersOf(int DataPair::*tag, int DataPair::*partner) {
    Partners partners{};
    for (DataPair const& pair : dataPairs) {
        partners[static_cast<std::size_t>(pair.*tag)] = static_cast<short>(pair.*partner);
    }
    return partners;
}

constexpr Partners dataTags = partnersOf(&DataPair::length, &DataPair::data);
constexpr Partners lengthTags = partnersOf(&DataPair::data, &DataPair::length);

int lookUp(Partners const& partners, int tag) {
    auto const index = static_cast<unsigned>(tag);
    return index < behindPairs ? partners[index] : 0;
}

template <class Number>
bool readNumber(std::string_view digits, Number& number) {
    auto const [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    return error == std::errc{} && end == digits.data() + digits.size() && digits.front() != '-';
}

char const* find(char const* from, char const* end, char separator) {
    auto const* const found = std::memchr(from, separator, static_cast<std::size_t>(end - from));
    return found ? static_cast<char const*>(found) : end;
}

// Values are short: the next 16 bytes hold the separator nearly always.
char const* findSeparator(char const* from, char const* end, char separator) {
#if defined(__SSE2__)
    if (end - from >= 16) {
        __m128i const bytes = _mm_loadu_si128(reinterpret_cast<__m128i const*>(from));
        auto const matches = static_cast<unsigned>(
            _mm_movemask_epi8(_mm_cmpeq_epi8(bytes, _mm_set1_epi8(separator))));
        return matches != 0 ? from + std::countr_zero(matches) : find(from + 16, end, separator);
    }
#endif
    return find(from, end, separator);
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
    return lookUp(lengthTags, tag);
}

int dataTagOf(int tag) {
    return lookUp(dataTags, tag);
}

FieldCursor::FieldCursor(std::string_view text, char separator, Reading reading)
    : at_(text.data()), end_(text.data() + text.size()), token_(at_), separator_(separator),
      isStrict_(reading == Reading::Strict) {}

bool FieldCursor::next() {
    while (at_ != end_) {
        ++position_;
        token_ = at_;
        if (readTag()) {
            char const* const end = endOfValue();
            field_.value = {at_, static_cast<std::size_t>(end - at_)};
            readLength(end);
            passOver(end);
            return true;
        }
    }
    return false;
}

// Stands on the value then; what begins with no tag is passed over.
bool FieldCursor::readTag() {
    constexpr std::ptrdiff_t safeDigits = 9;
    char const* const stop = at_ + std::min(safeDigits, end_ - at_);
    int tag = 0;
    for (; at_ != stop && *at_ >= '0' && *at_ <= '9'; ++at_) {
        tag = tag * 10 + (*at_ - '0');
    }
    if (at_ != end_ && *at_ == '=' && tag > 0 && *token_ != '0') [[likely]] {
        field_.tag = tag;
        ++at_;
        return true;
    }
    return readOddTag();
}

bool FieldCursor::readOddTag() {
    char const* const end = findSeparator(token_, end_, separator_);
    char const* const equals = std::find(token_, end, '=');
    if (equals == end) {
        refuse(end, "has no '='");
    } else if (equals != token_ && *token_ != '0' && readNumber({token_, equals}, field_.tag)) {
        at_ = equals + 1;
        return true;
    } else {
        refuse(end, "has no positive number as its tag");
    }
    dataTag_ = 0;
    passOver(end);
    return false;
}

void FieldCursor::passOver(char const* end) {
    at_ = end == end_ ? end : end + 1;
}

// Where a data field follows its length, the length decides, not the separator.
char const* FieldCursor::endOfValue() const {
    char const* end = nullptr;
    if (dataTag_ == field_.tag) {
        auto const rest = static_cast<std::size_t>(end_ - at_);
        if (dataLength_ <= rest && (dataLength_ == rest || at_[dataLength_] == separator_)) {
            end = at_ + dataLength_;
        } else {
            refuse(at_ - 1, "does not have the length that the field before it tells");
        }
    }
    if (!end) {
        end = findSeparator(at_, end_, separator_);
    }
    if (end == at_) {
        refuse(end, "has an empty value");
    }
    return end;
}

void FieldCursor::readLength(char const* end) {
    dataTag_ = dataTagOf(field_.tag);
    if (dataTag_ != 0 && (field_.value.empty() || !readNumber(field_.value, dataLength_))) {
        dataTag_ = 0;
        refuse(end, "tells a length that is no number");
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
        if (cursor.field().tag == tag) {
            return cursor.field().value;
        }
    }
    return {};
}

} // namespace zan::server
