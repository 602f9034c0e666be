/// `zan::Decimal`: a price or a quantity with the decimal places that a counterparty wants to see.
///
/// Threads: a value.
#ifndef ZANENGINE_COMFORT_DECIMAL_H
#define ZANENGINE_COMFORT_DECIMAL_H

#include "infra/InfraException.h"
#include "infra/Value.h"

#include <array>
#include <charconv>
#include <cmath>
#include <string>
#include <system_error>
#include <utility>

namespace zan {

/// The value of a `Tag<double>` where its text matters: a `double` goes out in its shortest form,
/// 95.5, and `Decimal(95.5, 2)` as 95.50.
class Decimal {
public:
    static constexpr int maxPlaces = 15;

    /// Rounded to so many places, 0 to 15. `InfraException` for other places, and for a value that
    /// is not finite.
    Decimal(double value, int places) : text_(rounded(value, places)) {}

    /// The text as it stands. `InfraException` for what is no decimal number, such as `1e5`.
    explicit Decimal(std::string text) : text_(std::move(text)) {
        Value value;
        value.setString(text_);
        static_cast<void>(value.asDouble());
    }

    std::string const& text() const { return text_; }

private:
    static std::string rounded(double value, int places) {
        if (places < 0 || places > maxPlaces) {
            throw InfraException("a decimal number has 0 to 15 places, not " +
                                 std::to_string(places));
        }
        std::array<char, 350> place{}; // the greatest double has 309 digits
        auto const [end, error] = std::to_chars(place.data(), place.data() + place.size(), value,
                                                std::chars_format::fixed, places);
        if (error != std::errc() || !std::isfinite(value)) {
            throw InfraException("a value that is not finite is no decimal number");
        }
        return std::string(place.data(), end);
    }

    std::string text_;
};

} // namespace zan

#endif
