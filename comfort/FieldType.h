/// How the values of a `Tag<T>` get into a field and out of it. `MessageBuilder` and `FieldReader`
/// use it; an application specializes it to give its tags a type of its own.
///
/// Threads: as for the field group that is used.
#ifndef ZANENGINE_COMFORT_FIELDTYPE_H
#define ZANENGINE_COMFORT_FIELDTYPE_H

#include "comfort/Decimal.h"
#include "infra/Time.h"
#include "infra/Value.h"
#include "message/ZANFieldGroup.h"

#include <cstddef>
#include <limits>
#include <string>
#include <string_view>
#include <type_traits>

namespace zan {

/// `takes<V>` tells whether a `V` may be set; `put` sets one; `read` gives the `T` that a value
/// stands for, and throws `InfraException` when it stands for none.
template <class T, class = void>
struct FieldType;

/// A whole number of any width; neither `bool` nor a character.
template <class V>
inline constexpr bool isWholeNumber =
    std::is_integral_v<V> && !std::is_same_v<V, bool> && !std::is_same_v<V, char> &&
    !std::is_same_v<V, signed char> && !std::is_same_v<V, unsigned char> &&
    !std::is_same_v<V, wchar_t> && !std::is_same_v<V, char16_t> && !std::is_same_v<V, char32_t>;

template <>
struct FieldType<std::string> {
    template <class V>
    static constexpr bool takes =
        std::is_convertible_v<V const&, std::string_view> && !std::is_null_pointer_v<V>;

    template <class V>
    static void put(ZANFieldGroup& fields, int tag, V const& value) {
        if constexpr (std::is_convertible_v<V const&, char const*>) {
            fields.setFieldValue(tag, static_cast<char const*>(value)); // refuses a null pointer
        } else {
            fields.setFieldValue(tag, std::string(std::string_view(value)));
        }
    }
    static std::string read(Value const& value) { return value.asString(); }
};

template <>
struct FieldType<long> {
    template <class V>
    static constexpr bool takes = isWholeNumber<V>;

    template <class V>
    static void put(ZANFieldGroup& fields, int tag, V value) {
        if (fitsLong(value)) {
            fields.setFieldValue(tag, static_cast<long>(value));
        } else {
            fields.setFieldValue(tag, std::to_string(value));
        }
    }
    static long read(Value const& value) { return value.asLong(); }

private:
    template <class V>
    static constexpr bool fitsLong(V value) {
        using Limits = std::numeric_limits<long>;
        if constexpr (std::is_unsigned_v<V>) {
            return value <= static_cast<std::make_unsigned_t<long>>(Limits::max());
        } else {
            return value >= Limits::min() && value <= Limits::max();
        }
    }
};

template <>
struct FieldType<double> {
    template <class V>
    static constexpr bool takes =
        isWholeNumber<V> || std::is_floating_point_v<V> || std::is_same_v<V, Decimal>;

    template <class V>
    static void put(ZANFieldGroup& fields, int tag, V const& value) {
        if constexpr (std::is_same_v<V, Decimal>) {
            fields.setFieldValue(tag, value.text());
        } else if constexpr (isWholeNumber<V>) {
            FieldType<long>::put(fields, tag, value);
        } else {
            fields.setFieldValue(tag, static_cast<double>(value));
        }
    }
    static double read(Value const& value) { return value.asDouble(); }
};

template <>
struct FieldType<bool> {
    template <class V>
    static constexpr bool takes = std::is_same_v<V, bool>;

    static void put(ZANFieldGroup& fields, int tag, bool value) {
        fields.setFieldValue(tag, value);
    }
    static bool read(Value const& value) { return value.asBool(); }
};

template <>
struct FieldType<char> {
    template <class V>
    static constexpr bool takes = std::is_same_v<V, char>;

    static void put(ZANFieldGroup& fields, int tag, char value) {
        fields.setFieldValue(tag, value);
    }
    static char read(Value const& value) { return value.asChar(); }
};

template <>
struct FieldType<infra::Time> {
    template <class V>
    static constexpr bool takes = std::is_same_v<V, infra::Time>;

    static void put(ZANFieldGroup& fields, int tag, infra::Time value) {
        fields.setFieldValue(tag, value.toString());
    }

    /// Digits beyond the milliseconds are dropped.
    static infra::Time read(Value const& value) {
        std::string text = value.asString();
        constexpr std::size_t withMillis = 21; // YYYYMMDD-HH:MM:SS.sss
        if (text.size() > withMillis &&
            text.find_first_not_of("0123456789", withMillis) == std::string::npos) {
            text.resize(withMillis);
        }
        return infra::Time::fromString(text);
    }
};

/// An enumeration of `char` is one character, another one a whole number. Values without a name
/// are read as well.
template <class E>
struct FieldType<E, std::enable_if_t<std::is_enum_v<E>>> {
    using Code = std::conditional_t<std::is_same_v<std::underlying_type_t<E>, char>, char, int>;

    template <class V>
    static constexpr bool takes = std::is_same_v<V, E>;

    static void put(ZANFieldGroup& fields, int tag, E value) {
        fields.setFieldValue(tag, static_cast<Code>(value));
    }
    static E read(Value const& value) {
        if constexpr (std::is_same_v<Code, char>) {
            return static_cast<E>(value.asChar());
        } else {
            return static_cast<E>(value.asInt());
        }
    }
};

} // namespace zan

#endif
