#include "server/log/CallersSql.h"

#include "server/log/MessageLog.h"

#include <algorithm>
#include <array>
#include <utility>

namespace zan::server {

namespace {

constexpr std::size_t longestText = 64 * 1024;
constexpr std::size_t longestShown = 120;

// What is computed of one large value before the clock is looked at.
constexpr std::size_t mostBrackets = 40;

bool isBlankCharacter(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f';
}

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

bool startsName(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' ||
           static_cast<unsigned char>(c) >= 0x80;
}

bool continuesName(char c) {
    return startsName(c) || isDigit(c) || c == '$';
}

// A quote inside of a quoted name is written twice.
std::string withoutQuotes(std::string_view quoted) {
    char const quote = quoted.back();
    std::string name;
    for (std::size_t at = 1; at + 1 < quoted.size(); ++at) {
        name += quoted[at];
        at += quoted[at] == quote ? 1 : 0;
    }
    return name;
}

} // namespace

std::string inSmallLetters(std::string text) {
    std::ranges::transform(text, text.begin(), [](char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    });
    return text;
}

CallersSql::CallersSql(std::string text) : text_(std::move(text)), original_(text_) {
    if (text_.size() > longestText) {
        throw BadExpression("the expression has " + std::to_string(text_.size()) +
                            " characters; at most " + std::to_string(longestText) +
                            " would be right");
    }
    for (std::size_t at = 0; at < text_.size();) {
        at = scan(at);
    }
    checkBrackets();
    checkNames();
}

std::vector<CallersSql::Part> CallersSql::partsAtCommas() const {
    std::vector<Part> parts;
    Part part;
    int depth = 0;
    for (std::size_t token = 0; token < tokens_.size(); ++token) {
        depth += isSymbol(token, '(') ? 1 : isSymbol(token, ')') ? -1 : 0;
        if (depth == 0 && isSymbol(token, ',')) {
            part.last = token;
            parts.push_back(part);
            part.first = token + 1;
        }
    }
    part.last = tokens_.size();
    parts.push_back(part);
    return parts;
}

std::string CallersSql::name(std::size_t token) const {
    SqlToken const& asked = tokens_[token];
    std::string name;
    if (asked.kind == SqlToken::Kind::Name) {
        name = text_.substr(asked.begin, asked.end - asked.begin);
    } else if (asked.kind == SqlToken::Kind::QuotedName) {
        name = withoutQuotes(std::string_view(text_).substr(asked.begin, asked.end - asked.begin));
    }
    return inSmallLetters(std::move(name));
}

bool CallersSql::isSymbol(std::size_t token, char symbol) const {
    return token < tokens_.size() && tokens_[token].kind == SqlToken::Kind::Symbol &&
           text_[tokens_[token].begin] == symbol;
}

void CallersSql::fail(std::size_t offset, std::string const& reason) const {
    std::string const shown =
        original_.size() > longestShown ? original_.substr(0, longestShown) + "..." : original_;
    throw BadExpression("position " + std::to_string(offset + 1) + " of \"" + shown +
                        "\": " + reason);
}

void CallersSql::failAt(std::size_t token, std::string const& reason) const {
    fail(token < tokens_.size() ? tokens_[token].begin : original_.size(), reason);
}

// Takes what begins at an offset, and returns where it ends. Comments become blanks.
std::size_t CallersSql::scan(std::size_t at) {
    char const c = text_[at];
    std::string_view const pair = std::string_view(text_).substr(at, 2);
    if (isBlankCharacter(c)) {
        return at + 1;
    }
    if (pair == "--" || pair == "/*") {
        std::size_t const end = endOfComment(at);
        std::fill(text_.begin() + static_cast<std::ptrdiff_t>(at),
                  text_.begin() + static_cast<std::ptrdiff_t>(end), ' ');
        return end;
    }
    if (c == '\0' || c == ';' || std::string_view("?:@$#").find(c) != std::string_view::npos) {
        fail(at, c == ';' || c == '\0'
                     ? "one expression alone would be right"
                     : std::string("a parameter ('") + c + "') has no value here");
    }
    auto kind = SqlToken::Kind::Symbol;
    std::size_t end = at + 1;
    if (c == '\'') {
        kind = SqlToken::Kind::Text;
        end = endOfQuoted(at, c);
    } else if (c == '"' || c == '`' || c == '[') {
        kind = SqlToken::Kind::QuotedName;
        end = endOfQuoted(at, c == '[' ? ']' : c);
    } else if (startsName(c) || isDigit(c)) {
        kind = startsName(c) ? SqlToken::Kind::Name : SqlToken::Kind::Number;
        end = static_cast<std::size_t>(
            std::find_if_not(text_.begin() + static_cast<std::ptrdiff_t>(at), text_.end(),
                             continuesName) -
            text_.begin());
    }
    tokens_.push_back({kind, at, end});
    return end;
}

std::size_t CallersSql::endOfComment(std::size_t at) const {
    if (text_[at] == '-') {
        return std::min(text_.find('\n', at), text_.size());
    }
    std::size_t const end = text_.find("*/", at + 2);
    if (end == std::string::npos) {
        fail(at, "a comment does not end");
    }
    return end + 2;
}

std::size_t CallersSql::endOfQuoted(std::size_t at, char quote) const {
    for (std::size_t end = at + 1; end < text_.size(); ++end) {
        if (text_[end] != quote) {
            continue;
        }
        bool const isTwice = quote != ']' && end + 1 < text_.size() && text_[end + 1] == quote;
        if (!isTwice) {
            return end + 1;
        }
        ++end;
    }
    fail(at, text_[at] == '\'' ? "a text does not end" : "a quoted name does not end");
}

void CallersSql::checkBrackets() const {
    std::vector<std::size_t> open;
    for (std::size_t token = 0; token < tokens_.size(); ++token) {
        if (isSymbol(token, '(')) {
            open.push_back(token);
            if (open.size() > mostBrackets) {
                failAt(token, "brackets stand in each other more than " +
                                  std::to_string(mostBrackets) + " times");
            }
        } else if (isSymbol(token, ')')) {
            if (open.empty()) {
                failAt(token, "')' without a '('");
            }
            open.pop_back();
        }
    }
    if (!open.empty()) {
        failAt(open.back(), "'(' without a ')'");
    }
}

// Words that no column can be called by without quotes, and that would lead away from the log.
void CallersSql::checkNames() const {
    constexpr std::array forbidden = {"select", "values", "exists", "raise"};
    for (std::size_t token = 0; token < tokens_.size(); ++token) {
        if (tokens_[token].kind != SqlToken::Kind::Name) {
            continue;
        }
        std::string const word = name(token);
        if (std::ranges::find(forbidden, word) != forbidden.end()) {
            failAt(token, "'" + word +
                              "' cannot be used here, only the columns of the log and "
                              "functions of them");
        }
    }
}

} // namespace zan::server
