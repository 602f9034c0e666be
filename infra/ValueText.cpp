#include "infra/ValueText.h"

#include "infra/InfraException.h"
#include "infra/ValuePresentation.h"

#include <charconv>
#include <cmath>
#include <string>
#include <typeinfo>

namespace zan {

namespace {

template <class... Format>
std::string_view digitsOf(DigitBuffer& digits, Format... format) {
    auto const end = std::to_chars(digits, digits + sizeof digits, format...).ptr;
    return {digits, static_cast<std::size_t>(end - digits)};
}

std::string_view doubleText(double number, DigitBuffer& digits) {
    double const size = std::abs(number);
    if (size == 0 || (size >= 1e-5 && size <= 1e15)) {
        return digitsOf(digits, number, std::chars_format::fixed);
    }
    return digitsOf(digits, number);
}

} // namespace

std::string_view defaultText(Value const& value, DigitBuffer& digits) {
    switch (value.getType()) {
    case Value::LONG:
        return digitsOf(digits, value.asLong());
    case Value::DOUBLE:
        return doubleText(value.asDouble(), digits);
    case Value::STRING:
        return value.asStringView();
    case Value::BOOL:
        return value.asBool() ? "Y" : "N";
    case Value::CHAR:
        digits[0] = value.asChar();
        return {digits, 1};
    default:
        return {};
    }
}

bool usesDefaultText() {
    auto const* presentation = ValuePresentation::Instance_;
    return !presentation || typeid(*presentation) == typeid(ValueDefaultPresentation);
}

void throwUnknownType(int type) {
    throw InfraException("A value cannot have the type " + std::to_string(type) +
                         ": types are 1 (long), 2 (double), 3 (string), 11 (bool), 24 (char).");
}

} // namespace zan
