#include "conversations/Script.h"

#include <fstream>

namespace conversations {

Script readScript(std::string const& path) {
    std::ifstream file(path);
    if (!file) {
        throw std::runtime_error(path + ": cannot be read");
    }
    Script script;
    std::string text;
    for (int line = 1; std::getline(file, text); ++line) {
        if (text.empty() || text.front() == '#') {
            continue;
        }
        std::string const verb = takeWord(text);
        if (verb == "session") {
            std::string const key = takeWord(text, '=');
            script.settings[key] = text;
        } else {
            script.steps.push_back({line, verb, text});
        }
    }
    return script;
}

} // namespace conversations
