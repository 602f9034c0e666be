#include "apps/zan/Arguments.h"

#include "apps/zan/CommandTree.h"
#include "apps/zan/ExitCodes.h"
#include "apps/zan/HelpFormatter.h"
#include "apps/zan/Terminal.h"
#include "server/config/Spelling.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

namespace zan::cli {

namespace {

constexpr char const* about =
    "Works with a messaging engine from the command line: connections, messages, the message log.";

std::string exitCodesText() {
    std::string text = "Exit codes:\n";
    for (ExitMeaning const& each : exitMeanings()) {
        std::string const code = std::to_string(static_cast<int>(each.code));
        text += "  " + code + std::string(5 - code.size(), ' ') + each.meaning + "\n";
    }
    return text;
}

constexpr char const* advice =
    "An engine is named by its URL. With embedded: the engine lives in this program: it has the "
    "data folder for itself, and its connections are logged out when the command ends.\n"
    "zan COMMAND --help explains a command.\n\n";

// The innermost command that the command line names, or the program.
CLI::App const* innermostOf(CLI::App const* command) {
    while (!command->get_subcommands().empty()) {
        command = command->get_subcommands().front();
    }
    return command;
}

std::string withAdvice(std::string const& fault, std::string_view word,
                       std::vector<std::string> const& known) {
    std::string_view const nearest = server::nearestWord(word, {known.begin(), known.end()});
    return fault + " \"" + printable(word) + "\"; " +
           (nearest.empty() ? "" : std::string(nearest) + " would be right; ") +
           "zan --help explains";
}

std::vector<std::string> commandNames(CLI::App const& command) {
    std::vector<std::string> names;
    for (CommandEntry const& each : commandTree(command).commands) {
        names.push_back(each.name);
    }
    return names;
}

// The long ones: those of a letter are near to each other.
std::vector<std::string> optionNames(CLI::App const& program, CLI::App const& command) {
    std::vector<std::string> names;
    for (CLI::App const* const app : {&command, &program}) {
        for (OptionEntry const& option : commandTree(*app).options) {
            std::ranges::copy_if(option.names, std::back_inserter(names),
                                 [](std::string const& name) { return name.starts_with("--"); });
        }
    }
    return names;
}

// Names the one word that nobody knows, when that is what is wrong; else empty.
std::string unknownWord(CLI::App const& program) {
    CLI::App const& command = *innermostOf(&program);
    std::vector<std::string> const words = program.remaining(true);
    auto const option =
        std::ranges::find_if(words, [](std::string const& word) { return word.starts_with('-'); });
    if (option != words.end()) {
        return withAdvice("there is no option", option->substr(0, option->find('=')),
                          optionNames(program, command));
    }
    bool const needsCommand = command.get_require_subcommand_min() > 0;
    return words.empty() || !needsCommand
               ? ""
               : withAdvice("there is no command", words.front(), commandNames(command));
}

} // namespace

Arguments::Arguments() : program_(std::make_unique<CLI::App>(about, "zan")) {
    program_->formatter(helpFormatter());
    program_->footer(advice + exitCodesText());
    program_->require_subcommand(1);
    program_->fallthrough();
    addGlobalOptions();
    addConnectionCommands(commands_);
    addSendingCommands(commands_);
    addLogCommands(commands_);
    addTailCommand(commands_);
    addEditingCommands(commands_);
    addMarksCommand(commands_);
    addDecodeCommand(commands_);
    addImportCommand(commands_);
    addModulesCommand(commands_);
    addDoctorCommand(commands_);
    addShellCommands(commands_);
    for (std::unique_ptr<Command> const& command : commands_) {
        command->addTo(*program_);
    }
}

Arguments::~Arguments() = default;

void Arguments::addGlobalOptions() {
    Options(*program_)
        .text(options_.url, "--url", "URL", "the engine, such as embedded:sessions.cfg (ZAN_URL)")
        .text(options_.user, "--user", textKind, "who asks (ZAN_USER; the login name)")
        .text(options_.secret, "--secret", textKind,
              "the secret of the ticket; better in ZAN_SECRET or the config file")
        .text(options_.config, "--config", fileKind,
              "the file with url, user and secret ($XDG_CONFIG_HOME/zan/config)")
        .text(options_.dictionary, "--dictionary", fileKind,
              "names and groups, in QuickFIX's XML format")
        .choice(options_.color, "--color", "auto|always|never", "colours: auto, always or never")
        .choice(options_.diagnostics, "--diagnostics", "debug|info|warning|error",
                "what the engine tells of itself, from this level on, on standard error")
        .flag(options_.isJson, "--json", "one object of JSON a line")
        .flag(options_.isRaw, "--raw",
              "the bytes of the messages alone, a message a line; on a terminal with | for SOH")
        .excludes("--json")
        .flag(options_.showsSecrets, "--show-secrets",
              "passwords in messages as they are, not as ***");
}

std::optional<ExitCode> Arguments::parse(int argc, char const* const* argv, std::ostream& out,
                                         std::ostream& errors) {
    try {
        program_->parse(argc, argv);
        return std::nullopt;
    } catch (CLI::Success const& asked) {
        program_->exit(asked, out, errors);
        return ExitCode::Ok;
    } catch (CLI::ParseError const& wrong) {
        std::string const unknown = unknownWord(*program_);
        errors << "zan: "
               << (unknown.empty() ? printable(wrong.what()) + "; zan --help explains" : unknown)
               << std::endl;
        return ExitCode::Usage;
    }
}

Command& Arguments::chosen() const {
    return **std::ranges::find_if(commands_, [](auto const& each) { return each->isChosen(); });
}

} // namespace zan::cli
