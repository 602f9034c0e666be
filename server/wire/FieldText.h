/// A message as text: `tag=value` after `tag=value`, separated by SOH or, for people, by `|`.
///
/// Threads: values and functions without shared state.
#ifndef ZANENGINE_SERVER_WIRE_FIELDTEXT_H
#define ZANENGINE_SERVER_WIRE_FIELDTEXT_H

#include "message/GroupAccess.h"
#include "server/sessions/StandardTags.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstring>
#include <stdexcept>
#include <string_view>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace zan::server {

/// A message that cannot be sent as it is; the text names the tag and the reason.
class MalformedMessage : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

inline constexpr char fieldSeparator = '\x01';

inline constexpr int messageTypeTag = 35;
inline constexpr int senderTag = 49;
inline constexpr int targetTag = 56;

/// One field; the value looks into the text that was read.
using WireField = TextField;

/// Where the next separator is, or the end.
inline char const* findSeparator(char const* from, char const* end, char separator) {
#if defined(__SSE2__)
    // Values are short: the next 16 bytes hold it nearly always.
    if (end - from >= 16) [[likely]] {
        __m128i const bytes = _mm_loadu_si128(reinterpret_cast<__m128i const*>(from));
        auto const matches = static_cast<unsigned>(
            _mm_movemask_epi8(_mm_cmpeq_epi8(bytes, _mm_set1_epi8(separator))));
        if (matches != 0) {
            return from + std::countr_zero(matches);
        }
        from += 16;
    }
#endif
    auto const* const found = std::memchr(from, separator, static_cast<std::size_t>(end - from));
    return found ? static_cast<char const*>(found) : end;
}

/// How to take text that is not as it should be.
enum class Reading {
    Strict,  ///< throws `MalformedMessage`
    Tolerant ///< passes over what is no field and goes on
};

/// Walks over the fields of a text, in one pass and in a time that grows with its length only.
class FieldCursor {
public:
    FieldCursor(std::string_view text, char separator, Reading reading);

    /// Moves to the next field; false at the end. The first call moves to the first field.
    bool next() {
        while (at_ != end_) {
            ++position_;
            token_ = at_;
            if (readTag()) {
                value_ = at_;
                valueEnd_ = endOfValue();
                if (isLengthOrData(tag_)) [[unlikely]] {
                    readLength();
                } else {
                    dataTag_ = 0;
                }
                passOver(valueEnd_);
                return true;
            }
        }
        return false;
    }

    int tag() const { return tag_; }
    std::string_view value() const { return {value_, valueEnd_}; }

    /// The same together. Fields that are kept are made of their parts, `{tag(), value()}`: a copy
    /// of the whole would wait for its parts to be written.
    WireField field() const { return {tag(), value()}; }

private:
    // Stands on the value then; what begins with no tag is passed over.
    bool readTag() {
        constexpr std::ptrdiff_t safeDigits = 9;
        char const* at = at_;
        char const* const stop = at + std::min(safeDigits, end_ - at);
        int tag = 0;
        for (; at != stop && *at >= '0' && *at <= '9'; ++at) {
            tag = tag * 10 + (*at - '0');
        }
        if (at != end_ && *at == '=' && tag > 0 && *token_ != '0') [[likely]] {
            tag_ = tag;
            at_ = at + 1;
            return true;
        }
        return readOddTag();
    }

    char const* endOfValue() const {
        if (dataTag_ == tag_) [[unlikely]] {
            return endOfData();
        }
        char const* const end = findSeparator(at_, end_, separator_);
        if (end == at_ && isStrict_) [[unlikely]] {
            refuse(end, "has an empty value");
        }
        return end;
    }

    void passOver(char const* end) { at_ = end == end_ ? end : end + 1; }

    bool readOddTag();
    char const* endOfData() const;
    void readLength();
    void refuse(char const* end, char const* reason) const;

    char const* at_;
    char const* end_;
    char const* token_;
    char const* value_ = nullptr;
    char const* valueEnd_ = nullptr;
    int tag_ = 0;
    // The data field whose length the field before has told, or 0.
    int dataTag_ = 0;
    std::size_t dataLength_ = 0;
    int position_ = 0;
    char separator_;
    bool isStrict_;
};

/// The first value of a tag in the text of a message from the wire; empty when it is not there.
std::string_view valueOf(std::string_view message, int tag);

} // namespace zan::server

#endif
