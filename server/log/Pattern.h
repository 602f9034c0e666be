/// The patterns of LIKE and GLOB, matched in a time that does not explode.
///
/// Threads: one at a time.
#ifndef ZANENGINE_SERVER_LOG_PATTERN_H
#define ZANENGINE_SERVER_LOG_PATTERN_H

#include "server/log/SearchClock.h"

#include <cstddef>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace zan::server {

/// Reads one character of UTF-8 and moves behind it; bytes that are none count as one each.
char32_t nextCharacter(std::string_view text, std::size_t& at);

class Pattern {
public:
    /// As LIKE reads it: `%`, `_`, and what follows the escape character as it stands there.
    /// Letters of ASCII match in both cases.
    static Pattern like(std::string_view pattern, std::optional<char32_t> escape);

    /// As GLOB reads it: `*`, `?`, `[a-z]`, `[^a-z]`.
    static Pattern glob(std::string_view pattern);

    /// Nothing when the time was over before the end.
    std::optional<bool> matches(std::string_view text, SearchClock const& clock) const;

private:
    enum class Kind { Any, One, Character, Set };

    struct Token {
        Kind kind = Kind::Any;
        char32_t character = 0;
        bool isInverted = false;
        std::vector<std::pair<char32_t, char32_t>> ranges;
    };

    explicit Pattern(bool ignoresCase) : ignoresCase_(ignoresCase) {}

    void addSet(std::string_view pattern, std::size_t& at);
    char32_t folded(char32_t character) const;
    bool accepts(Token const& token, char32_t character) const;

    bool ignoresCase_;
    std::vector<Token> tokens_;
};

} // namespace zan::server

#endif
