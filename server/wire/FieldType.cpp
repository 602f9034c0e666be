#include "server/wire/FieldType.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <utility>

namespace zan::server {

namespace {

using Names = std::pair<std::string_view, FieldType>;

constexpr Names names[] = {{"AMT", FieldType::Decimal},
                           {"BOOLEAN", FieldType::Flag},
                           {"CHAR", FieldType::Char},
                           {"DATE", FieldType::Date},
                           {"DAYOFMONTH", FieldType::Day},
                           {"FLOAT", FieldType::Decimal},
                           {"INT", FieldType::Number},
                           {"LENGTH", FieldType::Count},
                           {"LOCALMKTDATE", FieldType::Date},
                           {"MONTHYEAR", FieldType::Month},
                           {"MULTIPLECHARVALUE", FieldType::Values},
                           {"MULTIPLESTRINGVALUE", FieldType::Values},
                           {"MULTIPLEVALUESTRING", FieldType::Values},
                           {"NUMINGROUP", FieldType::Count},
                           {"PERCENTAGE", FieldType::Decimal},
                           {"PRICE", FieldType::Decimal},
                           {"PRICEOFFSET", FieldType::Decimal},
                           {"QTY", FieldType::Decimal},
                           {"QUANTITY", FieldType::Decimal},
                           {"SEQNUM", FieldType::Count},
                           {"TAGNUM", FieldType::Count},
                           {"TIME", FieldType::Timestamp},
                           {"UTCDATE", FieldType::Date},
                           {"UTCDATEONLY", FieldType::Date},
                           {"UTCTIMEONLY", FieldType::Time},
                           {"UTCTIMESTAMP", FieldType::Timestamp}};

bool areDigits(std::string_view text) {
    return !text.empty() && std::ranges::all_of(text, [](char c) { return c >= '0' && c <= '9'; });
}

bool isWithin(std::string_view digits, int lowest, int highest) {
    int number = 0;
    return areDigits(digits) && digits.size() <= 9 &&
           std::from_chars(digits.data(), digits.data() + digits.size(), number).ec ==
               std::errc() &&
           number >= lowest && number <= highest;
}

std::string_view withoutSign(std::string_view text) {
    return text.starts_with('-') ? text.substr(1) : text;
}

bool isDecimal(std::string_view text) {
    text = withoutSign(text);
    std::size_t const point = text.find('.');
    if (point == std::string_view::npos) {
        return areDigits(text);
    }
    std::string_view const whole = text.substr(0, point);
    std::string_view const part = text.substr(point + 1);
    return (whole.empty() || areDigits(whole)) && (part.empty() || areDigits(part)) &&
           text.size() > 1;
}

bool isDate(std::string_view text) {
    return text.size() == 8 && areDigits(text.substr(0, 4)) && isWithin(text.substr(4, 2), 1, 12) &&
           isWithin(text.substr(6, 2), 1, 31);
}

bool isMonth(std::string_view text) {
    bool const isWeek = text.size() == 8 && text[6] == 'w' && isWithin(text.substr(7), 1, 5);
    return isDate(text) || ((text.size() == 6 || isWeek) && areDigits(text.substr(0, 4)) &&
                            isWithin(text.substr(4, 2), 1, 12));
}

// Seconds may be 60, for a leap second.
bool isTime(std::string_view text, bool needsSeconds) {
    if (text.size() < 5 || text[2] != ':' || !isWithin(text.substr(0, 2), 0, 23) ||
        !isWithin(text.substr(3, 2), 0, 59)) {
        return false;
    }
    std::string_view const seconds = text.substr(5);
    if (seconds.empty()) {
        return !needsSeconds;
    }
    return seconds.size() >= 3 && seconds[0] == ':' && isWithin(seconds.substr(1, 2), 0, 60) &&
           (seconds.size() == 3 || (seconds[3] == '.' && areDigits(seconds.substr(4))));
}

bool isTimestamp(std::string_view text) {
    return text.size() >= 17 && text[8] == '-' && isDate(text.substr(0, 8)) &&
           isTime(text.substr(9), true);
}

} // namespace

FieldType fieldTypeOf(std::string_view name) {
    auto const found = std::ranges::lower_bound(names, name, {}, &Names::first);
    return found != std::end(names) && found->first == name ? found->second : FieldType::Any;
}

bool hasFormat(FieldType type, std::string_view value) {
    switch (type) {
    case FieldType::Any:
    case FieldType::Values:
        return true;
    case FieldType::Char:
        return value.size() == 1;
    case FieldType::Number:
        return areDigits(withoutSign(value));
    case FieldType::Count:
        return areDigits(value);
    case FieldType::Decimal:
        return isDecimal(value);
    case FieldType::Flag:
        return value == "Y" || value == "N";
    case FieldType::Day:
        return isWithin(value, 1, 31);
    case FieldType::Date:
        return isDate(value);
    case FieldType::Month:
        return isMonth(value);
    case FieldType::Time:
        return isTime(value, false);
    case FieldType::Timestamp:
        return isTimestamp(value);
    }
    return true;
}

} // namespace zan::server
