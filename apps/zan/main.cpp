// zan: the command-line client.
#include "apps/zan/Arguments.h"
#include "apps/zan/ExitCodes.h"
#include "apps/zan/Interrupt.h"
#include "apps/zan/Names.h"
#include "apps/zan/Output.h"
#include "apps/zan/Settings.h"
#include "apps/zan/Terminal.h"

#include "infra/Diagnostics.h"

#include <iostream>
#include <map>
#include <ostream>

#include <unistd.h>

namespace {

using namespace zan::cli;

OutputSettings outputSettings(GlobalOptions const& options) {
    return {options.isJson  ? OutputFormat::Json
            : options.isRaw ? OutputFormat::Raw
                            : OutputFormat::Table,
            terminalWidth(STDOUT_FILENO), wantsColor(options.color, STDOUT_FILENO)};
}

int ending(std::exception const& failure) {
    ExitCode const code = exitCodeOf(failure);
    if (code != ExitCode::OutputClosed) {
        std::cerr << "zan: " << printable(lineOf(failure)) << std::endl;
    }
    return static_cast<int>(code);
}

// The engine may tell something on any of its threads.
void showDiagnostics(std::string const& lowest) {
    std::map<std::string, DiagnosticLevel> const levels = {{"debug", DiagnosticLevel::Debug},
                                                           {"info", DiagnosticLevel::Info},
                                                           {"warning", DiagnosticLevel::Warning},
                                                           {"error", DiagnosticLevel::Error}};
    auto const level = levels.find(lowest);
    if (level == levels.end()) {
        return;
    }
    auto const sink = [](DiagnosticLevel of, std::string const& category, std::string const& text) {
        std::cerr << std::string(levelName(of)) + " " + printable(category + ": " + text) + "\n"
                  << std::flush;
    };
    setDiagnosticSink(sink, level->second);
}

// Silence could also mean that something does not work.
void tellIfEmpty(Output const& output) {
    if (output.isEmpty() && isTerminal(STDERR_FILENO)) {
        std::cerr << "zan: there is nothing to show" << std::endl;
    }
}

int run(Arguments const& arguments, std::ostream& out) {
    Interrupt interrupt;
    showDiagnostics(arguments.options().diagnostics);
    Output output(out, outputSettings(arguments.options()));
    try {
        Settings const settings = resolve(arguments.options(), environment);
        for (std::string const& warning : settings.warnings) {
            std::cerr << "zan: " << warning << std::endl;
        }
        Names names(arguments.options().dictionary);
        Context context{settings, output, names, interrupt};
        ExitCode const code = arguments.chosen().run(context);
        output.flush();
        interrupt.check();
        tellIfEmpty(output);
        return static_cast<int>(code);
    } catch (OutputIsClosed const& closed) {
        return ending(closed);
    } catch (std::exception const& failure) {
        // What was found before the failure is worth something.
        try {
            output.flush();
        } catch (OutputIsClosed const& closed) {
            return ending(closed);
        }
        // A call that was broken off fails in a way of its own.
        return interrupt.happened() ? ending(Interruption()) : ending(failure);
    }
}

} // namespace

int main(int argc, char** argv) {
    // The engine and the library tell troubles on the standard output; here it is for results.
    std::ostream out(std::cout.rdbuf());
    std::cout.rdbuf(std::cerr.rdbuf());
    try {
        Arguments arguments;
        if (auto const end = arguments.parse(argc, argv, out, std::cerr)) {
            return static_cast<int>(*end);
        }
        return run(arguments, out);
    } catch (std::exception const& failure) {
        return ending(failure);
    }
}
