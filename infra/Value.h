/// `Value`: the typed value of a field.
///
/// Threads: a value belongs to one thread at a time; several may read one that nobody changes.
#ifndef ZANENGINE_INFRA_VALUE_H
#define ZANENGINE_INFRA_VALUE_H

#include "infra/Export.h"

#include <cstddef>
#include <cstring>
#include <iosfwd>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

template <class T>
struct default_destroy_policy;

/// A long, double, string, bool or char with its type code. Up to 22 characters of a string lie in
/// the value itself.
///
/// Every type can be read as every other where the text form makes sense of it: a string reads as
/// a number when it is exactly a whole number or decimal text (an optional minus sign, digits and
/// at most one point); a char reads as the string of that character, a bool as 1 or 0. Anything
/// else throws `InfraException` with a text that shows the value.
class ZAN_API Value {
public:
    static constexpr int LONG = 1;
    static constexpr int DOUBLE = 2;
    static constexpr int STRING = 3;
    static constexpr int BOOL = 11;
    static constexpr int CHAR = 24;

    /// Holds nothing: type 0, empty text, not readable as a number.
    Value() noexcept : payload_() {}
    Value(Value const& other) : payload_(other.payload_) {
        if (ownsText()) {
            copyText(other);
        }
    }
    Value(Value&& other) noexcept : payload_(other.payload_) { other.payload_ = Payload(); }
    Value& operator=(Value const& other) {
        if (!ownsText() && !other.ownsText()) {
            payload_ = other.payload_;
            return *this;
        }
        return assign(other);
    }
    Value& operator=(Value&& other) noexcept;
    virtual ~Value() {
        if (ownsText()) {
            releaseText();
        }
    }

    /// Makes this an empty value of the type: 0, 0.0, "", false or the character 0. A value that
    /// has the type already keeps its payload. `InfraException` for any other code than the five
    /// and 0.
    void setType(int type);
    [[nodiscard]] int getType() const noexcept { return payload_.type; }

    /// Each stores the payload and the type that goes with it.
    void setLong(long value);
    void setDouble(double value);
    void setString(std::string const& value);
    void setBool(bool value);
    void setChar(char value);

    /// The value as a number. A double loses its fraction in `asLong` and `asInt`. `InfraException`
    /// when the value is no number or does not fit; `asInt` is 32 bits wide.
    [[nodiscard]] long asLong() const;
    [[nodiscard]] int asInt() const;
    [[nodiscard]] double asDouble() const;

    /// A bool as it is; a number is true unless it is 0; text is true for `Y`, false for `N`.
    [[nodiscard]] bool asBool() const;

    /// A char as it is; otherwise the only character of the text form.
    [[nodiscard]] char asChar() const;

    /// The text form of any type, by the installed `ValuePresentation`.
    [[nodiscard]] std::string asString() const;

    /// The characters of a string, without a copy; valid while the value is unchanged.
    /// `InfraException` for another type.
    [[nodiscard]] std::string_view asStringView() const;

    /// Equal when types and payloads are.
    bool operator==(Value const& other) const;
    bool operator!=(Value const& other) const;

private:
    friend class ZANField; // makes its value in place
    friend class ZANFieldGroup;
    template <class T>
    friend struct default_destroy_policy; // ends that of a plain field

    static constexpr std::size_t placeSize = 22;
    static constexpr unsigned char textOnHeap = 0xFF;

    // A number, the characters of a short string, or where a long one lies. `size` counts the
    // characters in place, or is `textOnHeap`.
    struct Payload {
        alignas(8) unsigned char place[placeSize];
        unsigned char size;
        unsigned char type;
    };

    struct HeapText {
        char* data;
        std::size_t size;
    };

    /// A value of the type that goes with the payload. The place is not cleared first.
    template <class T>
    [[gnu::always_inline]] Value(std::in_place_t, T const& payload) {
        payload_.size = 0;
        put(payload);
    }

    void put(long value) { setLong(value); }
    void put(double value) { setDouble(value); }
    void put(bool value) { setBool(value); }
    void put(char value) { setChar(value); }
    void put(std::string const& value) { setString(value); }
    void put(std::string_view value) { setText(value); }
    void put(Value const& value) { *this = value; }

    template <class T>
    [[nodiscard]] T load() const noexcept;
    template <class T>
    void store(int type, T payload) noexcept;

    [[nodiscard]] bool ownsText() const noexcept { return payload_.size == textOnHeap; }
    void copyText(Value const& other);
    void releaseText() noexcept;
    void dropText() noexcept {
        if (ownsText()) {
            releaseText();
        }
        payload_.size = 0;
    }
    static void copyShort(unsigned char* to, char const* from, std::size_t size) noexcept;
    void setText(std::string_view text);
    void setLongText(std::string_view text);
    [[nodiscard]] std::string_view longText() const;
    [[nodiscard]] long wholeNumber() const;
    [[nodiscard]] double number() const;
    [[nodiscard]] char onlyCharacter() const;
    Value& assign(Value const& other);

    Payload payload_;
};

template <class T>
T Value::load() const noexcept {
    T payload;
    std::memcpy(&payload, payload_.place, sizeof payload);
    return payload;
}

template <class T>
void Value::store(int type, T payload) noexcept {
    static_assert(std::is_trivially_copyable_v<T> && sizeof(T) <= placeSize);
    dropText();
    std::memcpy(payload_.place, &payload, sizeof payload);
    payload_.type = static_cast<unsigned char>(type);
}

inline void Value::setLong(long value) {
    store(LONG, value);
}

inline void Value::setDouble(double value) {
    store(DOUBLE, value);
}

inline void Value::setBool(bool value) {
    store(BOOL, value);
}

inline void Value::setChar(char value) {
    store(CHAR, value);
}

inline void Value::setString(std::string const& value) {
    setText(value);
}

// With two moves that may overlap, whatever the size: a call costs more than a short text.
inline void Value::copyShort(unsigned char* to, char const* from, std::size_t size) noexcept {
    static_assert(placeSize <= 24);
    if (size > 16) {
        std::memcpy(to, from, 16);
        std::memcpy(to + size - 8, from + size - 8, 8);
    } else if (size >= 8) {
        std::memcpy(to, from, 8);
        std::memcpy(to + size - 8, from + size - 8, 8);
    } else if (size >= 4) {
        std::memcpy(to, from, 4);
        std::memcpy(to + size - 4, from + size - 4, 4);
    } else if (size > 0) {
        to[0] = static_cast<unsigned char>(from[0]);
        to[size / 2] = static_cast<unsigned char>(from[size / 2]);
        to[size - 1] = static_cast<unsigned char>(from[size - 1]);
    }
}

inline void Value::setText(std::string_view text) {
    if (text.size() > placeSize) {
        setLongText(text);
        return;
    }
    dropText();
    copyShort(payload_.place, text.data(), text.size());
    payload_.size = static_cast<unsigned char>(text.size());
    payload_.type = STRING;
}

inline long Value::asLong() const {
    return payload_.type == LONG ? load<long>() : wholeNumber();
}

inline double Value::asDouble() const {
    return payload_.type == DOUBLE ? load<double>() : number();
}

inline char Value::asChar() const {
    return payload_.type == CHAR ? load<char>() : onlyCharacter();
}

inline std::string_view Value::asStringView() const {
    if (payload_.type == STRING && !ownsText()) {
        return {reinterpret_cast<char const*>(payload_.place), payload_.size};
    }
    return longText();
}

/// Writes the text form of the value, by the installed `ValuePresentation`.
ZAN_API std::ostream& operator<<(std::ostream& os, Value const& value);

#endif
