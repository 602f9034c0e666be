/// Regular expressions without what std::regex costs a compiler in each source that uses it.
#ifndef ZANENGINE_TESTS_SUPPORT_PATTERN_H
#define ZANENGINE_TESTS_SUPPORT_PATTERN_H

#include <memory>
#include <string>
#include <vector>

/// In ECMAScript's syntax; std::regex_error for a text that is none.
class Pattern {
public:
    explicit Pattern(std::string const& text);
    ~Pattern();
    Pattern(Pattern const&) = delete;
    Pattern& operator=(Pattern const&) = delete;

    bool isIn(std::string const& text) const;

    /// The whole text and then the groups when the pattern is that of the whole; else nothing.
    std::vector<std::string> groupsOf(std::string const& text) const;

private:
    struct Compiled;
    std::unique_ptr<Compiled> compiled_;
};

#endif
