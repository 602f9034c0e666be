#include "apps/zan/ExpressionNames.h"

#include <algorithm>
#include <cctype>
#include <string_view>

namespace zan::cli {

namespace {

bool isWordLetter(char c) {
    return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_' || c == '$';
}

// Behind what begins with this sign; a quote that stands twice is no end.
std::size_t endBehind(std::string_view text, std::size_t begin, std::string_view end) {
    std::size_t const at = text.find(end, begin);
    return at == std::string_view::npos ? text.size() : at + end.size();
}

// Where the piece that begins here ends: quoted text, a comment, a word or number, or one sign.
std::size_t endOfPiece(std::string_view text, std::size_t begin) {
    char const c = text[begin];
    if (c == '\'' || c == '"' || c == '`') {
        return endBehind(text, begin + 1, text.substr(begin, 1));
    }
    if (c == '[') {
        return endBehind(text, begin, "]");
    }
    if (text.substr(begin, 2) == "--") {
        return endBehind(text, begin, "\n");
    }
    if (text.substr(begin, 2) == "/*") {
        return endBehind(text, begin + 2, "*/");
    }
    std::size_t end = begin;
    while (end < text.size() && isWordLetter(text[end])) {
        ++end;
    }
    return std::max(end, begin + 1);
}

bool isCall(std::string_view rest) {
    std::size_t const next = rest.find_first_not_of(" \t\r\n");
    return next != std::string_view::npos && rest[next] == '(';
}

bool isAs(std::string_view word) {
    return word.size() == 2 && (word[0] | 0x20) == 'a' && (word[1] | 0x20) == 's';
}

// The tag that the dictionary calls exactly so, or 0.
int tagCalled(std::string const& word, Names& names) {
    int const tag = std::isalpha(static_cast<unsigned char>(word[0])) != 0 ? names.tagOf(word) : 0;
    return tag > 0 && names.of({}).names.ofTag(tag) == word ? tag : 0;
}

} // namespace

std::string withTagNumbers(std::string const& expression, Names& names) {
    std::string_view const text = expression;
    std::string numbered;
    std::string_view wordBefore;
    for (std::size_t at = 0; at < text.size();) {
        std::size_t const end = endOfPiece(text, at);
        std::string_view const piece = text.substr(at, end - at);
        bool const mayBeName = !isAs(wordBefore) && !isCall(text.substr(end));
        int const tag = mayBeName ? tagCalled(std::string(piece), names) : 0;
        numbered += tag > 0 ? "tag(" + std::to_string(tag) + ")" : std::string(piece);
        if (piece.find_first_not_of(" \t\r\n") != std::string_view::npos) {
            wordBefore = piece;
        }
        at = end;
    }
    return numbered;
}

} // namespace zan::cli
