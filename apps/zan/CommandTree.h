/// The commands and options of the program as plain data, for the manual page and for completion.
///
/// Threads: values and functions without shared state.
#ifndef ZANENGINE_APPS_ZAN_COMMANDTREE_H
#define ZANENGINE_APPS_ZAN_COMMANDTREE_H

#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace zan::cli {

struct OptionEntry {
    std::vector<std::string> names; ///< `-n`, `--limit`; empty for an argument without a name
    std::string argument;           ///< of an argument without a name: what the help calls it
    std::string kind;               ///< `FILE`, `NAME`, `a|b|c`; empty for a flag
    std::string description;
    bool isRequired = false;
    bool isRepeated = false;
};

struct CommandEntry {
    std::string name;
    std::string description;
    std::string details; ///< further sentences; may be empty
    std::vector<OptionEntry> options;
    std::vector<CommandEntry> commands;
};

/// What a program offers; what is hidden is left out.
CommandEntry commandTree(CLI::App const& program);

/// The values that a kind such as `auto|always|never` offers; empty for other kinds.
std::vector<std::string> choicesOf(std::string const& kind);

} // namespace zan::cli

#endif
