#include "conversations/Script.h"

#include <fstream>

namespace conversations {

namespace {

// The application versions of FIXT.1.1 have numbers of their own.
void setVersion(std::map<std::string, std::string>& settings, std::string const& version) {
    bool const isFixt = version.starts_with("FIX.5");
    settings["BeginString"] = isFixt ? "FIXT.1.1" : version;
    if (isFixt) {
        settings["DefaultApplVerID"] = version;
    }
}

} // namespace

Script readScript(std::string const& path, std::string const& version) {
    std::ifstream file(path);
    if (!file) {
        throw std::runtime_error(path + ": cannot be read");
    }
    Script script;
    if (!version.empty()) {
        setVersion(script.settings, version);
    }
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
