#include "server/wire/WireText.h"

#include "server/wire/FieldText.h"
#include "server/wire/GroupWriter.h"
#include "server/wire/ModelWalk.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <initializer_list>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace zan::server {

namespace {

enum : int { versionTag = 8, lengthTag = 9, checksumTag = 10 };

// These stand where they have to, whatever the model holds.
bool isFrame(int tag) {
    return tag == versionTag || tag == lengthTag || tag == checksumTag || tag == messageTypeTag;
}

struct Tally {
    unsigned sum = 0; ///< of all bytes
    std::size_t separators = 0;
};

Tally tallyByteByByte(char const* from, char const* end, Tally tally) {
    for (; from != end; ++from) {
        tally.sum += static_cast<unsigned char>(*from);
        tally.separators += *from == fieldSeparator ? 1 : 0;
    }
    return tally;
}

#if defined(__SSE2__)

unsigned sumOfHalves(__m128i halves) {
    return static_cast<unsigned>(_mm_cvtsi128_si32(halves)) +
           static_cast<unsigned>(_mm_cvtsi128_si32(_mm_srli_si128(halves, 8)));
}

// Sixteen bytes at once. Both sums are modulo 2^32, which is a multiple of 256.
Tally tally(std::string_view text) {
    __m128i const zero = _mm_setzero_si128();
    __m128i const separator = _mm_set1_epi8(fieldSeparator);
    __m128i const one = _mm_set1_epi8(1);
    __m128i sums = zero;
    __m128i separators = zero;
    char const* from = text.data();
    char const* const end = from + text.size();
    for (; end - from >= 16; from += 16) {
        __m128i const bytes = _mm_loadu_si128(reinterpret_cast<__m128i const*>(from));
        sums = _mm_add_epi64(sums, _mm_sad_epu8(bytes, zero));
        __m128i const found = _mm_and_si128(_mm_cmpeq_epi8(bytes, separator), one);
        separators = _mm_add_epi64(separators, _mm_sad_epu8(found, zero));
    }
    return tallyByteByByte(from, end, {sumOfHalves(sums), sumOfHalves(separators)});
}

#else

Tally tally(std::string_view text) {
    return tallyByteByByte(text.data(), text.data() + text.size(), {});
}

#endif

// Most values are short, and a call costs more than two moves that may overlap.
char* put(char* to, std::string_view text) {
    std::size_t const size = text.size();
    char const* const from = text.data();
    if (size > 16) {
        std::memcpy(to, from, size);
    } else if (size >= 8) {
        std::memcpy(to, from, 8);
        std::memcpy(to + size - 8, from + size - 8, 8);
    } else if (size >= 4) {
        std::memcpy(to, from, 4);
        std::memcpy(to + size - 4, from + size - 4, 4);
    } else {
        for (std::size_t i = 0; i < size; ++i) {
            to[i] = from[i];
        }
    }
    return to + size;
}

char* putNumber(char* to, long number) {
    if (number >= 0 && number < 100) {
        if (number >= 10) {
            *to++ = static_cast<char>('0' + number / 10);
        }
        *to++ = static_cast<char>('0' + number % 10);
        return to;
    }
    return std::to_chars(to, to + sizeof(DigitBuffer), number).ptr;
}

char* putTag(char* to, int tag) {
    auto const digit = [](int value) { return static_cast<char>('0' + value); };
    if (tag < 10) {
        *to++ = digit(tag);
    } else if (tag < 100) {
        *to++ = digit(tag / 10);
        *to++ = digit(tag % 10);
    } else if (tag < 1000) {
        *to++ = digit(tag / 100);
        *to++ = digit(tag / 10 % 10);
        *to++ = digit(tag % 10);
    } else {
        to = put(to, NumberText(static_cast<std::size_t>(tag)));
    }
    *to++ = '=';
    return to;
}

/// Writes fields one behind the other.
class TextSink {
public:
    [[gnu::always_inline]] bool field(int tag, std::string_view text) {
        char* const at = roomFor(text.size());
        endField(put(putTag(at, tag), text));
        return !text.empty();
    }

    [[gnu::always_inline]] bool field(int tag, Value const& value) {
        if (value.getType() == Value::STRING) [[likely]] {
            return field(tag, value.asStringView());
        }
        char* at = putTag(roomFor(0), tag);
        switch (value.getType()) {
        case Value::CHAR:
            *at++ = value.asChar();
            endField(at);
            return true;
        case Value::LONG:
            endField(putNumber(at, value.asLong()));
            return true;
        default:
            return number(at, value);
        }
    }

    void data(int tag, std::string_view text) {
        field(tag, text);
        separators_ += static_cast<std::size_t>(std::ranges::count(text, fieldSeparator));
    }

    /// The length of the body, three digits for now.
    void beginBody() {
        field(lengthTag, "000");
        body_ = written();
    }

    void setBodyLength() {
        std::size_t const length = written() - body_;
        NumberText const digits(length);
        std::size_t const wanted = std::string_view(digits).size();
        roomFor(wanted);
        char* const slot = begin_ + body_ - reservedDigits - 1;
        if (wanted != reservedDigits) {
            std::memmove(slot + wanted, slot + reservedDigits, length + 1);
            at_ = slot + wanted + 1 + length;
        }
        put(slot, digits);
    }

    /// False when a value holds a separator that it must not.
    bool addChecksum() {
        Tally const all = tally(text());
        bool const isGood = all.separators == separators_;
        unsigned const sum = all.sum % 256;
        char* at = putTag(roomFor(checksumDigits), checksumTag);
        for (unsigned const digit : {sum / 100, sum / 10 % 10, sum % 10}) {
            *at++ = static_cast<char>('0' + digit);
        }
        endField(at);
        return isGood;
    }

    std::string_view text() const { return {begin_, written()}; }

private:
    // Digits are written where they stay.
    bool number(char* at, Value const& value) {
        std::string_view const text = defaultText(value, *reinterpret_cast<DigitBuffer*>(at));
        endField(text.data() == at ? at + text.size() : put(at, text));
        return !text.empty();
    }

    static constexpr std::size_t usualRoom = 1024;
    static constexpr std::size_t reservedDigits = 3;
    static constexpr std::size_t checksumDigits = 3;
    // A tag of ten digits, '=', any number and the separator.
    static constexpr std::size_t roomAround = 12 + sizeof(DigitBuffer);

    // A pointer to characters may point to itself, for all that the compiler knows: it is read
    // once for a field and written once.
    void endField(char* at) {
        *at = fieldSeparator;
        at_ = at + 1;
        ++separators_;
    }

    std::size_t written() const { return static_cast<std::size_t>(at_ - begin_); }

    char* roomFor(std::size_t valueSize) {
        if (static_cast<std::size_t>(end_ - at_) < valueSize + roomAround) [[unlikely]] {
            grow(valueSize);
        }
        return at_;
    }

    [[gnu::noinline]] void grow(std::size_t valueSize) {
        std::size_t const used = written();
        std::string larger(2 * used + valueSize + usualRoom, '\0');
        std::memcpy(larger.data(), begin_, used);
        large_.swap(larger);
        begin_ = large_.data();
        at_ = begin_ + used;
        end_ = begin_ + large_.size();
    }

    // A text of usual size is made here, where nothing has to be cleared for it.
    char place_[usualRoom];
    std::string large_;
    char* begin_ = place_;
    char* at_ = place_;
    char* end_ = place_ + usualRoom;
    std::size_t body_ = 0;
    std::size_t separators_ = 0;
};

// A short text that stays when the model's values are looked at.
std::string typeOf(ZANFieldGroup const& message, ModelWalk<TextSink>& walk) {
    std::string type(walk.valueOf(message, messageTypeTag));
    if (type.empty()) {
        throw MalformedMessage("tag 35, the type of the message, is missing");
    }
    return type;
}

void writeMessage(ZANFieldGroup const& message, CompiledDictionary const& dictionary,
                  std::string const& type, ModelWalk<TextSink>& walk, TextSink& sink) {
    std::string_view const version = walk.valueOf(message, versionTag);
    sink.field(versionTag, version.empty() ? dictionary.beginString() : version);
    sink.beginBody();
    sink.field(messageTypeTag, type);
    walk.setType(type);
    walk.top(message,
             [&](int tag) { return dictionary.placeOf(tag) == TagPlace::header && !isFrame(tag); });
    bool isSigned = false;
    walk.top(message, [&](int tag) {
        TagPlace const place = dictionary.placeOf(tag);
        isSigned |= place == TagPlace::trailer;
        return place == TagPlace::body;
    });
    if (isSigned) {
        walk.top(message, [&](int tag) {
            return dictionary.placeOf(tag) == TagPlace::trailer && !isFrame(tag);
        });
    }
    sink.setBodyLength();
}

} // namespace

void appendWireText(std::string& text, ZANFieldGroup const& message,
                    CompiledDictionary const& dictionary) {
    if (!GroupAccess::isPlain(message)) {
        appendWireText(text, ZANFieldGroup(message), dictionary);
        return;
    }
    TextSink sink;
    ModelWalk<TextSink> walk(dictionary, sink);
    std::string const type = typeOf(message, walk);
    writeMessage(message, dictionary, type, walk, sink);
    if (!sink.addChecksum()) {
        writeFields(message, type, dictionary); // names the tag
        refusal::separatorInside(versionTag);
    }
    text.append(sink.text());
}

std::string wireText(ZANFieldGroup const& message, CompiledDictionary const& dictionary) {
    std::string text;
    appendWireText(text, message, dictionary);
    return text;
}

unsigned checksumOf(std::string_view text) {
    return tally(text).sum % 256;
}

} // namespace zan::server
