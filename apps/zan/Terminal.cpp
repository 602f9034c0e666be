#include "apps/zan/Terminal.h"

#include <algorithm>
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

// The control characters that UTF-8 spells with two bytes, U+0080 to U+009F.
bool isLongControl(std::string_view character) {
    return character.size() == 2 && character[0] == '\xC2' &&
           static_cast<unsigned char>(character[1]) < 0xA0;
}

bool isControl(char c) {
    return static_cast<unsigned char>(c) < ' ' || c == '\x7F';
}

std::string escaped(char c) {
    constexpr std::string_view digits = "0123456789abcdef";
    auto const byte = static_cast<unsigned char>(c);
    return {'\\', 'x', digits[byte >> 4U], digits[byte & 0xFU]};
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
    while (!bytes.empty()) {
        std::size_t const length = lengthOfCharacter(bytes);
        std::string_view const character = bytes.substr(0, std::max<std::size_t>(length, 1));
        if (character[0] == '\x01') {
            text += '|';
        } else if (length == 0 || isControl(character[0]) || isLongControl(character)) {
            for (char const c : character) {
                text += escaped(c);
            }
        } else {
            text += character;
        }
        bytes.remove_prefix(character.size());
    }
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
