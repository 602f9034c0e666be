#include "support/Pattern.h"

#include <regex>

struct Pattern::Compiled {
    std::regex expression;
};

Pattern::Pattern(std::string const& text) : compiled_(new Compiled{std::regex(text)}) {}

Pattern::~Pattern() = default;

bool Pattern::isIn(std::string const& text) const {
    return std::regex_search(text, compiled_->expression);
}

std::vector<std::string> Pattern::groupsOf(std::string const& text) const {
    std::smatch parts;
    std::regex_match(text, parts, compiled_->expression);
    return {parts.begin(), parts.end()};
}
