#include "apps/zan/ManualPage.h"

#include "apps/zan/ExitCodes.h"

namespace zan::cli {

namespace {

// Text in which nothing is taken for a request or an escape of the language.
std::string escaped(std::string const& text) {
    std::string safe;
    for (char const c : text) {
        if (c == '\\') {
            safe += "\\e";
        } else if (c == '-') {
            safe += "\\-";
        } else if (c == '\'') {
            safe += "\\(aq";
        } else {
            safe += c;
        }
    }
    return safe.starts_with('.') ? "\\&" + safe : safe;
}

std::string bold(std::string const& text) {
    return "\\fB" + escaped(text) + "\\fR";
}

std::string italic(std::string const& text) {
    return "\\fI" + escaped(text) + "\\fR";
}

std::string titleOf(OptionEntry const& option) {
    if (option.names.empty()) {
        return italic(option.argument) + (option.isRepeated ? " ..." : "");
    }
    std::string title;
    for (std::string const& name : option.names) {
        title += (title.empty() ? "" : ", ") + bold(name);
    }
    return option.kind.empty() ? title : title + " " + italic(option.kind);
}

std::string optionsOf(CommandEntry const& command) {
    std::string text;
    for (OptionEntry const& option : command.options) {
        if (option.names != std::vector<std::string>{"-h", "--help"}) {
            text += ".TP\n" + titleOf(option) + "\n" + escaped(option.description) + "\n";
        }
    }
    return text;
}

std::string argumentsOf(CommandEntry const& command) {
    std::string text;
    for (OptionEntry const& option : command.options) {
        if (option.names.empty()) {
            std::string const argument = italic(option.argument) + (option.isRepeated ? "..." : "");
            text += option.isRequired ? " " + argument : " [" + argument + "]";
        }
    }
    return text;
}

std::string commandsOf(CommandEntry const& command, std::string const& before) {
    std::string text;
    for (CommandEntry const& each : command.commands) {
        std::string const name = before + each.name;
        text += ".SS " + bold(name) + argumentsOf(each) + "\n" + escaped(each.description) + ".\n" +
                (each.details.empty() ? "" : escaped(each.details) + "\n") + optionsOf(each) +
                commandsOf(each, name + " ");
    }
    return text;
}

std::string exitStatus() {
    std::string text = ".SH EXIT STATUS\n";
    for (ExitMeaning const& each : exitMeanings()) {
        text += ".TP\n" + bold(std::to_string(static_cast<int>(each.code))) + "\n" +
                escaped(each.meaning) + "\n";
    }
    return text;
}

constexpr char const* surroundings =
    R"(.SH ENVIRONMENT
.TP
\fBZAN_URL\fR, \fBZAN_USER\fR, \fBZAN_SECRET\fR
What the options \-\-url, \-\-user and \-\-secret tell; the options go before them.
.TP
\fBZAN_ADAPTER_PATH\fR
Folders with adapter modules, separated by colons; relative ones count from the working folder.
.TP
\fBNO_COLOR\fR
When it is not empty there are no colours, unless \-\-color asks for them.
.SH FILES
.TP
\fI$XDG_CONFIG_HOME/zan/config\fR, \fI~/.config/zan/config\fR
Lines such as \(lqurl = embedded:sessions.cfg\(rq with the keys url, user and secret; # begins a
comment. The environment goes before it. A file with a secret should be readable by its owner alone.
)";

} // namespace

std::string manualPage(CommandEntry const& program) {
    return ".TH ZAN 1\n.SH NAME\nzan \\- command\\-line client of a messaging engine\n"
           ".SH SYNOPSIS\n" +
           bold("zan") + " [" + italic("options") + "] " + italic("command") +
           " [arguments]\n.SH DESCRIPTION\n" + escaped(program.description) +
           "\n.PP\nAn engine is named by its URL. With the protocol embedded the engine lives in "
           "this program: it has the data folder for itself, and its connections are logged out "
           "when the command ends.\n.SH OPTIONS\nThey may stand before the command or behind "
           "it.\n" +
           optionsOf(program) + ".SH COMMANDS\n" + commandsOf(program, "") + exitStatus() +
           surroundings;
}

} // namespace zan::cli
