/// One command of the program: its arguments and what it does.
///
/// Threads: one at a time.
#ifndef ZANENGINE_APPS_ZAN_COMMAND_H
#define ZANENGINE_APPS_ZAN_COMMAND_H

#include "apps/zan/ExitCodes.h"
#include "apps/zan/Interrupt.h"
#include "apps/zan/Names.h"
#include "apps/zan/Options.h"
#include "apps/zan/Output.h"
#include "apps/zan/Session.h"
#include "apps/zan/Settings.h"

#include <memory>
#include <string>
#include <vector>

namespace zan::cli {

/// What commands work with; it outlives them.
struct Context {
    Settings const& settings;
    Output& output;
    Names& names;
    Interrupt& interrupt;
};

class Command {
public:
    virtual ~Command() = default;
    Command(Command const&) = delete;
    Command& operator=(Command const&) = delete;

    /// Adds the command to the program; called once. Options refer to this object.
    virtual void addTo(CLI::App& program) = 0;

    /// Does it, once the arguments were read. What it throws ends the program with the code that
    /// goes with it.
    virtual ExitCode run(Context& context) = 0;

    /// Whether the arguments ask for this command.
    bool isChosen() const { return isGiven(*app_); }

protected:
    Command() = default;

    CLI::App* app_ = nullptr;
};

using Commands = std::vector<std::unique_ptr<Command>>;

// Each family of commands adds its own.

void addConnectionCommands(Commands& commands);
void addSendingCommands(Commands& commands);
void addLogCommands(Commands& commands);
void addTailCommand(Commands& commands);
void addEditingCommands(Commands& commands);
void addMarksCommand(Commands& commands);
void addDecodeCommand(Commands& commands);
void addModulesCommand(Commands& commands);
void addDoctorCommand(Commands& commands);
void addImportCommand(Commands& commands);
void addShellCommands(Commands& commands);

} // namespace zan::cli

#endif
