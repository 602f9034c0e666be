#include "server/counterparty/Decimal.h"

#include <algorithm>

namespace zan::server {

namespace {

bool allDigits(std::string const& text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

} // namespace

std::optional<Decimal> parseDecimal(std::string const& text) {
    bool const negative = !text.empty() && text.front() == '-';
    std::string whole = text.substr(negative ? 1 : 0);
    std::string fraction;
    if (std::size_t const point = whole.find('.'); point != std::string::npos) {
        fraction = whole.substr(point + 1);
        whole.erase(point);
    }
    while (!fraction.empty() && fraction.back() == '0')
        fraction.pop_back();
    if (whole.empty() || whole.size() > 12 || fraction.size() > 6 || !allDigits(whole) ||
        !allDigits(fraction))
        return std::nullopt;
    fraction.resize(6, '0');
    Decimal const number = std::stoll(whole) * decimalOne + std::stoll(fraction);
    return negative ? -number : number;
}

std::string decimalText(Decimal number) {
    Decimal const size = number < 0 ? -number : number;
    std::string text = (number < 0 ? "-" : "") + std::to_string(size / decimalOne);
    std::string fraction = std::to_string(size % decimalOne);
    fraction.insert(0, 6 - fraction.size(), '0');
    fraction.erase(fraction.find_last_not_of('0') + 1);
    return fraction.empty() ? text : text + "." + fraction;
}

} // namespace zan::server
