/// The types of fields, and how their values have to look.
///
/// Threads: functions without shared state.
#ifndef ZANENGINE_SERVER_WIRE_FIELDTYPE_H
#define ZANENGINE_SERVER_WIRE_FIELDTYPE_H

#include <cstdint>
#include <string_view>

namespace zan::server {

/// Types whose values look alike are one.
enum class FieldType : std::uint8_t {
    Any,       ///< text, data, and types that nobody knows
    Char,      ///< one character
    Number,    ///< a whole number, with a sign or without
    Count,     ///< a whole number, 0 or greater
    Decimal,   ///< with a point or without; no exponent
    Flag,      ///< Y or N
    Day,       ///< 1 to 31
    Date,      ///< YYYYMMDD
    Month,     ///< YYYYMM, YYYYMMDD or YYYYMMwN
    Time,      ///< HH:MM or HH:MM:SS with a fraction or without
    Timestamp, ///< a date, '-' and a time with seconds
    Values     ///< several, separated by blanks
};

/// By the name that a dictionary gives it, such as `INT` or `UTCTIMESTAMP`.
FieldType fieldTypeOf(std::string_view name);

bool hasFormat(FieldType type, std::string_view value);

} // namespace zan::server

#endif
