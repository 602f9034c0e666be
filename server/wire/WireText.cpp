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

enum : int { versionTag = 8, lengthTag = 9, checksumTag = 10, typeTag = 35 };

class TagSet {
public:
    constexpr TagSet(std::initializer_list<int> tags) {
        for (int const tag : tags) {
            words_[static_cast<unsigned>(tag) / 64] |= std::uint64_t{1} << tag % 64;
        }
    }

    constexpr bool holds(int tag) const {
        auto const index = static_cast<unsigned>(tag);
        return index < 64 * size && (words_[index / 64] >> index % 64 & 1) != 0;
    }

private:
    static constexpr unsigned size = 19;
    std::uint64_t words_[size] = {};
};

// These four stand where they have to, whatever the model holds.
constexpr TagSet frameTags = {versionTag, lengthTag, checksumTag, typeTag};
constexpr TagSet headerTags = {34,  43,  49,  50,  52,  56,   57,   90,  91,  97,
                               115, 116, 122, 128, 129, 142,  143,  144, 145, 212,
                               213, 347, 369, 370, 627, 1128, 1129, 1156};
constexpr TagSet trailerTags = {89, 93};

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

/// Writes fields behind what a text holds; takes them back when it is not finished.
class TextSink {
public:
    explicit TextSink(std::string& text) : text_(text), start_(text.size()) {
        text_.resize(start_ + usualRoom);
        at_ = text_.data() + start_;
    }
    TextSink(TextSink const&) = delete;
    TextSink& operator=(TextSink const&) = delete;
    ~TextSink() { text_.resize(start_); }

    void field(int tag, std::string_view value) {
        makeRoom(value.size());
        at_ = put(putTag(at_, tag), value);
        *at_++ = fieldSeparator;
        ++separators_;
    }

    void data(int tag, std::string_view value) {
        field(tag, value);
        separators_ += static_cast<std::size_t>(std::ranges::count(value, fieldSeparator));
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
        makeRoom(wanted);
        char* const slot = text_.data() + start_ + body_ - reservedDigits - 1;
        if (wanted != reservedDigits) {
            std::memmove(slot + wanted, slot + reservedDigits, length + 1);
            at_ = slot + wanted + 1 + length;
        }
        put(slot, digits);
    }

    /// Adds the checksum and keeps the text. False when a value holds a separator that it must not.
    bool finish() {
        Tally const all = tally({text_.data() + start_, written()});
        if (all.separators != separators_) {
            return false;
        }
        unsigned const sum = all.sum % 256;
        char const digits[] = {static_cast<char>('0' + sum / 100),
                               static_cast<char>('0' + sum / 10 % 10),
                               static_cast<char>('0' + sum % 10)};
        field(checksumTag, {digits, sizeof digits});
        start_ += written();
        return true;
    }

private:
    static constexpr std::size_t usualRoom = 512;
    static constexpr std::size_t reservedDigits = 3;
    // A tag of ten digits, '=' and the separator; some more for a length with many digits.
    static constexpr std::size_t roomAround = 32;

    std::size_t written() const { return static_cast<std::size_t>(at_ - text_.data()) - start_; }

    void makeRoom(std::size_t valueSize) {
        std::size_t const used = start_ + written();
        if (text_.size() - used < valueSize + roomAround) [[unlikely]] {
            text_.resize(2 * text_.size() + valueSize + roomAround);
            at_ = text_.data() + used;
        }
    }

    std::string& text_;
    std::size_t start_;
    char* at_;
    std::size_t body_ = 0;
    std::size_t separators_ = 0;
};

std::string_view textUnder(int tag, ZANFieldGroup const& message, FieldValueText& text) {
    auto const* const field = GroupAccess::fields(message).find(tag);
    return field && *field ? text.of(**field) : std::string_view();
}

} // namespace

void appendWireText(std::string& text, ZANFieldGroup const& message,
                    CompiledDictionary const& dictionary) {
    if (!GroupAccess::isPlain(message)) {
        appendWireText(text, ZANFieldGroup(message), dictionary);
        return;
    }
    FieldValueText versionText;
    FieldValueText typeText;
    std::string_view const version = textUnder(versionTag, message, versionText);
    std::string_view const type = textUnder(typeTag, message, typeText);
    if (type.empty()) {
        throw MalformedMessage("tag 35, the type of the message, is missing");
    }
    TextSink sink(text);
    ModelWalk<TextSink> walk(type, dictionary, sink);
    sink.field(versionTag, version.empty() ? dictionary.beginString() : version);
    sink.beginBody();
    sink.field(typeTag, type);
    walk.top(message, [](int tag) { return headerTags.holds(tag); });
    walk.top(message, [](int tag) {
        return !headerTags.holds(tag) && !frameTags.holds(tag) && !trailerTags.holds(tag);
    });
    walk.top(message, [](int tag) { return trailerTags.holds(tag); });
    sink.setBodyLength();
    if (!sink.finish()) {
        writeFields(message, std::string(type), dictionary); // names the tag
        refusal::separatorInside(versionTag);
    }
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
