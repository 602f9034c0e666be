/// Quantities and prices, exactly: a decimal number with at most six digits behind the point.
#ifndef ZANENGINE_SERVER_COUNTERPARTY_DECIMAL_H
#define ZANENGINE_SERVER_COUNTERPARTY_DECIMAL_H

#include <cstdint>
#include <optional>
#include <string>

namespace zan::server {

/// In millionths; a FIX quantity or price of up to twelve digits before the point.
using Decimal = std::int64_t;

inline constexpr Decimal decimalOne = 1'000'000;

/// Nothing when the text is no decimal number, or one that does not fit.
std::optional<Decimal> parseDecimal(std::string const& text);

/// The shortest text that reads back to the number.
std::string decimalText(Decimal number);

} // namespace zan::server

#endif
