// The commands for shells and for the manual: completion, and the hidden ones behind it.
#include "apps/zan/Command.h"
#include "apps/zan/CommandTree.h"
#include "apps/zan/Completion.h"
#include "apps/zan/ManualPage.h"

namespace zan::cli {

namespace {

class CompletionCommand final : public Command {
public:
    void addTo(CLI::App& program) override {
        app_ = &addCommand(program, "completion",
                           "Prints a script that lets a shell complete command lines of zan");
        program_ = &program;
        Options(*app_).choice(shell_, "shell", "bash|zsh|fish", "bash, zsh or fish").required();
    }

    ExitCode run(Context& context) override {
        CommandEntry const tree = commandTree(*program_);
        context.output.printText(shell_ == "bash"  ? bashCompletion(tree)
                                 : shell_ == "zsh" ? zshCompletion(tree)
                                                   : fishCompletion(tree));
        return ExitCode::Ok;
    }

private:
    CLI::App* program_ = nullptr;
    std::string shell_;
};

class ManualCommand final : public Command {
public:
    void addTo(CLI::App& program) override {
        app_ = &addHiddenCommand(program, "manual-page");
        program_ = &program;
    }

    ExitCode run(Context& context) override {
        context.output.printText(manualPage(commandTree(*program_)));
        return ExitCode::Ok;
    }

private:
    CLI::App* program_ = nullptr;
};

class CompleteConnectionsCommand final : public Command {
public:
    void addTo(CLI::App& program) override {
        app_ = &addHiddenCommand(program, "complete-connections");
    }

    ExitCode run(Context& context) override {
        Session session(context.settings, context.interrupt, Purpose::Reads);
        for (std::string const& name : session.names()) {
            context.output.printText(name + "\n");
        }
        return ExitCode::Ok;
    }
};

} // namespace

void addShellCommands(Commands& commands) {
    commands.push_back(std::make_unique<CompletionCommand>());
    commands.push_back(std::make_unique<ManualCommand>());
    commands.push_back(std::make_unique<CompleteConnectionsCommand>());
}

} // namespace zan::cli
