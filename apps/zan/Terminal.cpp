#include "apps/zan/Terminal.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>

#include <sys/ioctl.h>
#include <unistd.h>

namespace zan::cli {

namespace {

bool isContinuation(char c) {
    return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U;
}

// How many bytes the character at the beginning has; 0 when it is no UTF-8.
std::size_t lengthOfCharacter(std::string_view text) {
    auto const lead = static_cast<unsigned char>(text.front());
    std::size_t const length = lead < 0x80   ? 1
                               : lead < 0xC2 ? 0
                               : lead < 0xE0 ? 2
                               : lead < 0xF0 ? 3
                               : lead < 0xF5 ? 4
                                             : 0;
    if (length == 0 || text.size() < length) {
        return 0;
    }
    return std::ranges::all_of(text.substr(1, length - 1), isContinuation) ? length : 0;
}

// The number of a character that UTF-8 spells with these bytes.
std::uint32_t codePointOf(std::string_view character) {
    constexpr std::array<unsigned char, 5> leadBits = {0, 0x7F, 0x1F, 0x0F, 0x07};
    std::uint32_t point = static_cast<unsigned char>(character[0]) & leadBits.at(character.size());
    for (char const c : character.substr(1)) {
        point = point << 6U | (static_cast<unsigned char>(c) & 0x3FU);
    }
    return point;
}

bool isControl(std::uint32_t point) {
    return point < ' ' || (point >= 0x7F && point < 0xA0);
}

// Marks that nobody sees and that turn the direction of a text or end a line.
bool isHiddenMark(std::uint32_t point) {
    return point == 0x061C || point == 0x200E || point == 0x200F ||
           (point >= 0x2028 && point <= 0x202E) || (point >= 0x2066 && point <= 0x2069);
}

std::string hexadecimal(std::uint32_t number, int digits) {
    std::string text;
    while (--digits >= 0) {
        text += "0123456789abcdef"[number >> 4U * static_cast<unsigned>(digits) & 0xFU];
    }
    return text;
}

std::string escapedBytes(std::string_view bytes) {
    std::string text;
    for (char const c : bytes) {
        text += "\\x" + hexadecimal(static_cast<unsigned char>(c), 2);
    }
    return text;
}

std::string escapedPoint(std::uint32_t point) {
    return "\\u" + hexadecimal(point, 4);
}

// Gives out the text character by character; what is no UTF-8 byte by byte, and then `isSound` is
// false.
template <typename Sink> // void(std::string_view character, bool isSound)
void forEachCharacter(std::string_view text, Sink const& sink) {
    while (!text.empty()) {
        std::size_t const length = lengthOfCharacter(text);
        sink(text.substr(0, std::max<std::size_t>(length, 1)), length > 0);
        text.remove_prefix(std::max<std::size_t>(length, 1));
    }
}

} // namespace

bool isTerminal(int descriptor) {
    return isatty(descriptor) == 1;
}

std::optional<std::size_t> terminalWidth(int descriptor) {
    if (!isTerminal(descriptor)) {
        return std::nullopt;
    }
    constexpr std::size_t usual = 80;
    winsize size{};
    bool const isKnown = ioctl(descriptor, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
    return isKnown ? size.ws_col : usual;
}

bool wantsColor(std::string const& setting, int descriptor) {
    if (setting != "auto") {
        return setting == "always";
    }
    char const* const refused = std::getenv("NO_COLOR");
    char const* const terminal = std::getenv("TERM");
    return isTerminal(descriptor) && !(refused && *refused != '\0') &&
           !(terminal && std::string_view(terminal) == "dumb");
}

std::string printable(std::string_view bytes) {
    std::string text;
    text.reserve(bytes.size());
    forEachCharacter(bytes, [&](std::string_view character, bool isSound) {
        std::uint32_t const point = isSound ? codePointOf(character) : 0;
        if (character[0] == '\x01') {
            text += '|';
        } else if (!isSound || isControl(point)) {
            text += escapedBytes(character);
        } else {
            text += isHiddenMark(point) ? escapedPoint(point) : std::string(character);
        }
    });
    return text;
}

std::string withoutHiddenCharacters(std::string_view json) {
    std::string text;
    text.reserve(json.size());
    forEachCharacter(json, [&](std::string_view character, bool isSound) {
        std::uint32_t const point = isSound ? codePointOf(character) : 0;
        bool const isHidden = isSound && (isControl(point) || isHiddenMark(point));
        text += isHidden ? escapedPoint(point) : std::string(character);
    });
    return text;
}

std::size_t widthOf(std::string_view text) {
    return text.size() - static_cast<std::size_t>(std::ranges::count_if(text, isContinuation));
}

std::string cut(std::string_view text, std::size_t width) {
    if (widthOf(text) <= width) {
        return std::string(text);
    }
    std::size_t end = 0;
    for (std::size_t characters = 0; end < text.size(); ++end) {
        if (!isContinuation(text[end]) && ++characters == std::max<std::size_t>(width, 1)) {
            break;
        }
    }
    return std::string(text.substr(0, end)) + "…";
}

std::string cutBeginning(std::string_view text, std::size_t width) {
    std::size_t tooMany = widthOf(text) - std::min(widthOf(text), std::max<std::size_t>(width, 1));
    if (tooMany == 0) {
        return std::string(text);
    }
    std::size_t begin = 0;
    // One more, for the ellipsis.
    for (++tooMany; begin < text.size(); ++begin) {
        if (!isContinuation(text[begin]) && tooMany-- == 0) {
            break;
        }
    }
    return "…" + std::string(text.substr(begin));
}

std::string toned(std::string const& text, Tone tone, bool isColored) {
    if (!isColored || text.empty() || tone == Tone::Plain) {
        return text;
    }
    char const* const code = tone == Tone::Heading ? "1"
                             : tone == Tone::Good  ? "32"
                             : tone == Tone::Bad   ? "31"
                                                   : "2";
    return "\x1b[" + std::string(code) + "m" + text + "\x1b[0m";
}

} // namespace zan::cli
