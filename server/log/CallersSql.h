/// SQL that a caller wrote: cut into words before anything of it goes to the database, so that what
/// is wrong is told at its place in the caller's own text.
///
/// Threads: values.
#ifndef ZANENGINE_SERVER_LOG_CALLERSSQL_H
#define ZANENGINE_SERVER_LOG_CALLERSSQL_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace zan::server {

struct SqlToken {
    enum class Kind { Name, QuotedName, Text, Number, Symbol };

    Kind kind = Kind::Symbol;
    /// In the caller's text.
    std::size_t begin = 0;
    std::size_t end = 0;
};

/// As SQL compares names.
std::string inSmallLetters(std::string text);

class CallersSql {
public:
    /// Tokens from the first to the one before the last.
    struct Part {
        std::size_t first = 0;
        std::size_t last = 0;

        bool isEmpty() const { return first == last; }
    };

    /// Throws `BadExpression` for what can be no expression: a text or a bracket that does not end,
    /// a semicolon, a parameter, a SELECT.
    explicit CallersSql(std::string text);

    bool isBlank() const { return tokens_.empty(); }

    /// The text without its comments; every token lies where it was.
    std::string const& text() const { return text_; }
    std::vector<SqlToken> const& tokens() const { return tokens_; }
    Part whole() const { return {0, tokens_.size()}; }

    /// The parts between the commas that stand in no bracket.
    std::vector<Part> partsAtCommas() const;

    /// A name without its quotes, in small letters; empty for other tokens.
    std::string name(std::size_t token) const;
    bool isSymbol(std::size_t token, char symbol) const;

    /// Throws `BadExpression` with the position, counted from 1.
    [[noreturn]] void fail(std::size_t offset, std::string const& reason) const;
    [[noreturn]] void failAt(std::size_t token, std::string const& reason) const;

private:
    std::size_t scan(std::size_t at);
    std::size_t endOfComment(std::size_t at) const;
    std::size_t endOfQuoted(std::size_t at, char quote) const;
    void checkBrackets() const;
    void checkNames() const;

    std::string text_;
    std::string original_;
    std::vector<SqlToken> tokens_;
};

} // namespace zan::server

#endif
