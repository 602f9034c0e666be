/// The options and arguments of a command, put together piece by piece. The library that reads
/// command lines stays behind it: its headers take long to compile.
///
/// Threads: one at a time.
#ifndef ZANENGINE_APPS_ZAN_OPTIONS_H
#define ZANENGINE_APPS_ZAN_OPTIONS_H

#include <string>
#include <vector>

namespace CLI {
class App;
class Option;
} // namespace CLI

namespace zan::cli {

// The kinds of values, as the help shows them; completion offers what fits. A kind in small letters
// with `|` names the values themselves.
inline constexpr char const* connectionKind = "NAME";
inline constexpr char const* fileKind = "FILE";
inline constexpr char const* textKind = "TEXT";
inline constexpr char const* timeKind = "TIME";
inline constexpr char const* expressionKind = "EXPRESSION";

/// A new command below `program`, with options of its own. `details` are what its own help tells
/// beyond the one line of the list.
CLI::App& addCommand(CLI::App& program, std::string const& name, std::string const& description,
                     std::string const& details = {});

/// A detail of several commands: what they do with a connection that is not logged on.
inline constexpr char const* logsOnDetail =
    "With an engine in this program (embedded:) the connection is logged on for it.";

/// The same, left out of help, manual and completion.
CLI::App& addHiddenCommand(CLI::App& program, std::string const& name);

/// One of the commands below `program` has to be given.
void requireCommand(CLI::App& program);

/// Whether the command line has this command.
bool isGiven(CLI::App const& command);

/// Adds to one command. What an option refers to has to live as long as the command. A name without
/// dashes is an argument that is told by its place; several names have a comma between them.
class Options {
public:
    explicit Options(CLI::App& command) : command_(command) {}

    Options& text(std::string& value, std::string const& name, std::string const& kind,
                  std::string const& description);
    /// Every further argument.
    Options& texts(std::vector<std::string>& values, std::string const& name,
                   std::string const& kind, std::string const& description);
    Options& flag(bool& value, std::string const& name, std::string const& description);
    Options& number(long& value, std::string const& name, long least,
                    std::string const& description);
    Options& seconds(double& value, std::string const& name, std::string const& description);
    /// One of the values that `kind` names.
    Options& choice(std::string& value, std::string const& name, std::string const& kind,
                    std::string const& description);

    // About the option that was added last.

    Options& required();
    Options& excludes(std::string const& other);
    Options& needs(std::string const& other);

    // What many commands have.

    Options& connection(std::string& value);
    Options& onlyConnection(std::string& value);
    Options& allConnections(std::string& value);
    Options& stream(std::string& value);
    Options& where(std::string& value);
    Options& yes(bool& value);
    Options& connects(bool& value);

private:
    CLI::App& command_;
    CLI::Option* last_ = nullptr;
};

} // namespace zan::cli

#endif
