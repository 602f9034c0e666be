/// The command line of the program: its options, its commands, and how it is run.
///
/// Threads: one at a time.
#ifndef ZANENGINE_APPS_ZAN_ARGUMENTS_H
#define ZANENGINE_APPS_ZAN_ARGUMENTS_H

#include "apps/zan/Command.h"
#include "apps/zan/Settings.h"

#include <memory>
#include <optional>
#include <ostream>

namespace zan::cli {

class Arguments {
public:
    Arguments();
    ~Arguments();
    Arguments(Arguments const&) = delete;
    Arguments& operator=(Arguments const&) = delete;

    /// The whole tree of options and commands.
    CLI::App& program() { return *program_; }

    /// Reads the command line. Nothing when there is a command to run; else how the program ends,
    /// after the help was printed or what is wrong was told.
    std::optional<ExitCode> parse(int argc, char const* const* argv, std::ostream& out,
                                  std::ostream& errors);

    GlobalOptions const& options() const { return options_; }

    /// The command that was asked for. There is one after `parse`.
    Command& chosen() const;

private:
    void addGlobalOptions();

    GlobalOptions options_;
    std::unique_ptr<CLI::App> program_;
    Commands commands_;
};

} // namespace zan::cli

#endif
