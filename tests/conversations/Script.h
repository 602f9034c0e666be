/// Conversations as they are written in files: one step a line.
#ifndef ZANENGINE_TESTS_CONVERSATIONS_SCRIPT_H
#define ZANENGINE_TESTS_CONVERSATIONS_SCRIPT_H

#include <map>
#include <stdexcept>
#include <string>
#include <vector>

namespace conversations {

/// What was expected and did not come.
class Unexpected : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

struct Step {
    int line = 0;
    std::string verb;
    std::string rest;
};

struct Script {
    /// Keys of the session file that the conversation needs otherwise than usual.
    std::map<std::string, std::string> settings;
    std::vector<Step> steps;
};

/// Throws std::runtime_error for a file that cannot be read.
Script readScript(std::string const& path);

/// What stands before the first separator, which is taken away with it; all where there is none.
std::string takeWord(std::string& text, char separator = ' ');

} // namespace conversations

#endif
