#include "server/log/Pattern.h"

#include <algorithm>

namespace zan::server {

namespace {

// After so many steps the clock is looked at.
constexpr std::size_t stepsBetweenLooks = 16 * 1024;

bool isContinuation(char byte) {
    return (static_cast<unsigned char>(byte) & 0xc0) == 0x80;
}

int followersOf(unsigned char lead) {
    return lead >= 0xf0 ? 3 : lead >= 0xe0 ? 2 : lead >= 0xc0 ? 1 : 0;
}

} // namespace

char32_t nextCharacter(std::string_view text, std::size_t& at) {
    auto const lead = static_cast<unsigned char>(text[at++]);
    int const followers = followersOf(lead);
    char32_t character = followers == 0 ? lead : lead & (0x3fU >> followers);
    for (int i = 0; i < followers && at < text.size() && isContinuation(text[at]); ++i) {
        character = character << 6 | (static_cast<unsigned char>(text[at++]) & 0x3fU);
    }
    return character;
}

Pattern Pattern::like(std::string_view pattern, std::optional<char32_t> escape) {
    Pattern made(true);
    for (std::size_t at = 0; at < pattern.size();) {
        char32_t character = nextCharacter(pattern, at);
        Token token;
        if (escape && character == *escape && at < pattern.size()) {
            character = nextCharacter(pattern, at);
            token.kind = Kind::Character;
        } else {
            token.kind = character == '%'   ? Kind::Any
                         : character == '_' ? Kind::One
                                            : Kind::Character;
        }
        token.character = made.folded(character);
        made.tokens_.push_back(std::move(token));
    }
    return made;
}

Pattern Pattern::glob(std::string_view pattern) {
    Pattern made(false);
    for (std::size_t at = 0; at < pattern.size();) {
        char32_t const character = nextCharacter(pattern, at);
        if (character == '[') {
            made.addSet(pattern, at);
            continue;
        }
        Token token;
        token.kind = character == '*' ? Kind::Any : character == '?' ? Kind::One : Kind::Character;
        token.character = character;
        made.tokens_.push_back(std::move(token));
    }
    return made;
}

// A bracket right behind the beginning is part of the set. A set that does not end matches nothing.
void Pattern::addSet(std::string_view pattern, std::size_t& at) {
    Token set;
    set.kind = Kind::Set;
    if (at < pattern.size() && pattern[at] == '^') {
        set.isInverted = true;
        ++at;
    }
    for (bool isFirst = true; at < pattern.size() && (isFirst || pattern[at] != ']');
         isFirst = false) {
        char32_t const first = nextCharacter(pattern, at);
        bool const isRange =
            at + 1 < pattern.size() && pattern[at] == '-' && pattern[at + 1] != ']';
        if (isRange) {
            ++at;
        }
        set.ranges.emplace_back(first, isRange ? nextCharacter(pattern, at) : first);
    }
    if (at == pattern.size()) {
        set.isInverted = false;
        set.ranges.clear();
    }
    at = std::min(at + 1, pattern.size());
    tokens_.push_back(std::move(set));
}

char32_t Pattern::folded(char32_t character) const {
    return ignoresCase_ && character >= 'A' && character <= 'Z' ? character - 'A' + 'a' : character;
}

bool Pattern::accepts(Token const& token, char32_t character) const {
    switch (token.kind) {
    case Kind::One:
        return true;
    case Kind::Character:
        return token.character == folded(character);
    case Kind::Set:
        return token.isInverted !=
               std::ranges::any_of(token.ranges, [character](auto const& range) {
                   return range.first <= character && character <= range.second;
               });
    case Kind::Any:
        break;
    }
    return false;
}

// What the last `Any` stands for grows where the rest does not fit: never more steps than the text
// has characters times the pattern's.
std::optional<bool> Pattern::matches(std::string_view text, SearchClock const& clock) const {
    std::size_t token = 0;
    std::size_t afterAny = tokens_.size() + 1;
    std::size_t resume = 0;
    std::size_t steps = 0;
    for (std::size_t at = 0; at < text.size();) {
        if (++steps % stepsBetweenLooks == 0 && clock.isOver()) {
            return std::nullopt;
        }
        if (token < tokens_.size() && tokens_[token].kind == Kind::Any) {
            afterAny = ++token;
            resume = at;
            continue;
        }
        std::size_t next = at;
        char32_t const character = nextCharacter(text, next);
        if (token < tokens_.size() && accepts(tokens_[token], character)) {
            ++token;
            at = next;
        } else if (afterAny <= tokens_.size()) {
            nextCharacter(text, resume);
            at = resume;
            token = afterAny;
        } else {
            return false;
        }
    }
    return std::all_of(tokens_.begin() + static_cast<std::ptrdiff_t>(token), tokens_.end(),
                       [](Token const& left) { return left.kind == Kind::Any; });
}

} // namespace zan::server
