#include "infra/Value.h"

#include "infra/InfraException.h"
#include "infra/Pool.h"
#include "infra/ValuePresentation.h"
#include "infra/ValueText.h"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <ostream>
#include <utility>

#if defined(__LP64__)
static_assert(sizeof(Value) == 32);
#endif

namespace {

[[noreturn]] void throwUnreadable(Value const& value, char const* wanted) {
    zan::DigitBuffer digits;
    throw InfraException("Cannot read the value \"" + std::string(zan::defaultText(value, digits)) +
                         "\" as " + wanted + ".");
}

/// Digits with at most one point and an optional minus sign, and at least one digit.
bool isDecimal(std::string_view text) {
    if (!text.empty() && text.front() == '-') {
        text.remove_prefix(1);
    }
    std::size_t points = 0;
    for (char const c : text) {
        if (c == '.') {
            ++points;
        } else if (c < '0' || c > '9') {
            return false;
        }
    }
    return points <= 1 && text.size() > points;
}

template <class Number>
bool parseWhole(std::string_view text, Number& number) {
    char const* const end = text.data() + text.size();
    auto const [last, error] = std::from_chars(text.data(), end, number);
    return error == std::errc() && last == end;
}

} // namespace

void Value::copyText(Value const& other) {
    auto const text = other.load<HeapText>();
    HeapText const copy{static_cast<char*>(zan::pool::allocate(text.size)), text.size};
    std::memcpy(copy.data, text.data, text.size);
    std::memcpy(payload_.place, &copy, sizeof copy);
}

void Value::releaseText() noexcept {
    auto const text = load<HeapText>();
    zan::pool::release(text.data, text.size);
}

Value& Value::assign(Value const& other) {
    Value copy(other);
    std::swap(payload_, copy.payload_);
    return *this;
}

Value& Value::operator=(Value&& other) noexcept {
    std::swap(payload_, other.payload_);
    return *this;
}

void Value::setType(int type) {
    if (type == payload_.type) {
        return;
    }
    switch (type) {
    case 0:
    case LONG:
    case DOUBLE:
    case STRING:
    case BOOL:
    case CHAR:
        dropText();
        payload_ = Payload();
        payload_.type = static_cast<unsigned char>(type);
        return;
    default:
        zan::throwUnknownType(type);
    }
}

void Value::setLongText(std::string_view text) {
    HeapText const copy{static_cast<char*>(zan::pool::allocate(text.size())), text.size()};
    std::memcpy(copy.data, text.data(), text.size());
    dropText();
    std::memcpy(payload_.place, &copy, sizeof copy);
    payload_.size = textOnHeap;
    payload_.type = STRING;
}

long Value::wholeNumber() const {
    switch (payload_.type) {
    case BOOL:
        return load<bool>() ? 1 : 0;
    case DOUBLE: {
        // 2 to the power of the value bits is exact as a double, the largest long may not be.
        constexpr double limit = -static_cast<double>(std::numeric_limits<long>::min());
        double const whole = std::trunc(load<double>());
        if (!(whole >= -limit && whole < limit)) {
            throwUnreadable(*this, "a whole number: it is out of range");
        }
        return static_cast<long>(whole);
    }
    default: {
        zan::DigitBuffer digits;
        long number = 0;
        if (!parseWhole(zan::defaultText(*this, digits), number)) {
            throwUnreadable(*this, "a whole number");
        }
        return number;
    }
    }
}

int Value::asInt() const {
    long const number = asLong();
    if (number < std::numeric_limits<std::int32_t>::min() ||
        number > std::numeric_limits<std::int32_t>::max()) {
        throwUnreadable(*this, "a whole number of 32 bits");
    }
    return static_cast<int>(number);
}

double Value::number() const {
    switch (payload_.type) {
    case LONG:
        return static_cast<double>(load<long>());
    case BOOL:
        return load<bool>() ? 1.0 : 0.0;
    default: {
        zan::DigitBuffer digits;
        auto const text = zan::defaultText(*this, digits);
        double number = 0;
        if (!isDecimal(text) ||
            std::from_chars(text.data(), text.data() + text.size(), number).ec != std::errc()) {
            throwUnreadable(*this, "a number");
        }
        return number;
    }
    }
}

bool Value::asBool() const {
    switch (payload_.type) {
    case BOOL:
        return load<bool>();
    case LONG:
        return load<long>() != 0;
    case DOUBLE:
        return load<double>() != 0;
    default: {
        zan::DigitBuffer digits;
        auto const text = zan::defaultText(*this, digits);
        if (text != "Y" && text != "N") {
            throwUnreadable(*this, "a bool: Y or N");
        }
        return text == "Y";
    }
    }
}

char Value::onlyCharacter() const {
    zan::DigitBuffer digits;
    auto const text = zan::defaultText(*this, digits);
    if (text.size() != 1) {
        throwUnreadable(*this, "one character");
    }
    return text.front();
}

std::string Value::asString() const {
    if (zan::usesDefaultText()) {
        zan::DigitBuffer digits;
        return std::string(zan::defaultText(*this, digits));
    }
    std::string text;
    return ValuePresentation::Instance_->fillStringFromValue(*this, text);
}

std::string_view Value::longText() const {
    if (payload_.type != STRING) {
        throwUnreadable(*this, "a string without a copy: it has another type");
    }
    auto const text = load<HeapText>();
    return {text.data, text.size};
}

bool Value::operator==(Value const& other) const {
    if (payload_.type != other.payload_.type) {
        return false;
    }
    switch (payload_.type) {
    case LONG:
        return load<long>() == other.load<long>();
    case DOUBLE:
        return load<double>() == other.load<double>();
    case STRING:
        return asStringView() == other.asStringView();
    case BOOL:
        return load<bool>() == other.load<bool>();
    case CHAR:
        return load<char>() == other.load<char>();
    default:
        return true;
    }
}

bool Value::operator!=(Value const& other) const {
    return !(*this == other);
}

std::ostream& operator<<(std::ostream& os, Value const& value) {
    if (zan::usesDefaultText()) {
        zan::DigitBuffer digits;
        return os << zan::defaultText(value, digits);
    }
    std::string text;
    return os << ValuePresentation::Instance_->fillStringFromValue(value, text);
}
