#include "infra/ValueText.h"

#include "infra/InfraException.h"
#include "infra/ValuePresentation.h"

#include <charconv>
#include <cmath>
#include <string>
#include <typeinfo>

namespace zan {

namespace {

constexpr int mostDecimals = 8;
constexpr long long powersOfTen[] = {1,       10,        100,        1'000,      10'000,
                                     100'000, 1'000'000, 10'000'000, 100'000'000};

template <class... Format>
std::string_view digitsOf(DigitBuffer& digits, Format... format) {
    auto const end = std::to_chars(digits, digits + sizeof digits, format...).ptr;
    return {digits, static_cast<std::size_t>(end - digits)};
}

// The number `whole` with its last digits, at least one, behind the point.
std::string_view decimalText(bool isNegative, long long whole, int decimals, DigitBuffer& digits) {
    char* at = digits;
    if (isNegative) {
        *at++ = '-';
    }
    char* const end = digits + sizeof digits;
    long long const scale = powersOfTen[decimals];
    at = std::to_chars(at, end, whole / scale).ptr;
    // A digit before the decimals keeps their zeros; the point takes its place.
    char* const point = at;
    at = std::to_chars(at, end, scale + whole % scale).ptr;
    *point = '.';
    return {digits, static_cast<std::size_t>(at - digits)};
}

// Prices and quantities have few decimals. A quotient of two numbers that are exact is the double
// next to the decimal that it stands for, and no other decimal of at most 15 digits has the same
// one; so the first that gives the number back is the shortest. Empty when there is none.
std::string_view plainDecimal(double number, DigitBuffer& digits) {
    constexpr double most = 1e15;
    double const size = std::abs(number);
    if (size < most && static_cast<double>(static_cast<long long>(number)) == number) {
        return digitsOf(digits, static_cast<long long>(number));
    }
    for (int decimals = 1; decimals <= mostDecimals; ++decimals) {
        auto const scale = static_cast<double>(powersOfTen[decimals]);
        double const scaled = size * scale;
        if (!(scaled < most)) {
            return {};
        }
        // Where this rounds wrongly, the next line sees it.
        // NOLINTNEXTLINE(bugprone-incorrect-roundings)
        auto const whole = static_cast<long long>(scaled + 0.5);
        if (static_cast<double>(whole) / scale == size) {
            return decimalText(number < 0, whole, decimals, digits);
        }
    }
    return {};
}

std::string_view doubleText(double number, DigitBuffer& digits) {
    double const size = std::abs(number);
    if (size >= 1e-5) {
        if (auto const plain = plainDecimal(number, digits); !plain.empty()) {
            return plain;
        }
    }
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
