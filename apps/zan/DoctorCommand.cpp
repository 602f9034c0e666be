// doctor: what stands between the settings and a session, and what to do about it.
#include "apps/zan/Checks.h"
#include "apps/zan/Command.h"

namespace zan::cli {

namespace {

class DoctorCommand final : public Command {
public:
    void addTo(CLI::App& program) override {
        app_ = &addCommand(program, "doctor",
                           "Checks URL, module, files, ports and logons, and says what to do",
                           "A logon changes sequence numbers and is tried only with --logon.");
        Options(*app_).flag(logsOn_, "--logon", "log every connection on to see whether it works");
    }

    ExitCode run(Context& context) override {
        bool isWell = true;
        runChecks(context.settings, logsOn_, context.interrupt, [&](Check const& check) {
            isWell = isWell && check.result != CheckResult::Fault;
            show(check, context.output);
        });
        return isWell ? ExitCode::Ok : ExitCode::CheckFailed;
    }

private:
    static void show(Check const& check, Output& output) {
        auto const [name, tone] = nameOf(check.result);
        if (output.format() == OutputFormat::Table) {
            output.printText(linesOf(check, name, tone, output.isColored()));
        } else {
            output.print({{"check", check.name},
                          {"result", std::string(name)},
                          {"found", check.found},
                          {"advice", check.advice}});
        }
        output.flush();
    }

    // No table: what is to be done must not be cut at the edge of the terminal.
    static std::string linesOf(Check const& check, std::string const& name, Tone tone,
                               bool isColored) {
        constexpr std::size_t indent = 9;
        std::string const line = toned(name, tone, isColored) +
                                 std::string(indent - name.size(), ' ') + printable(check.name) +
                                 ": " + printable(check.found) + "\n";
        return check.advice.empty()
                   ? line
                   : line + std::string(indent, ' ') + "to do: " + printable(check.advice) + "\n";
    }

    static std::pair<char const*, Tone> nameOf(CheckResult result) {
        switch (result) {
        case CheckResult::Good:
            return {"ok", Tone::Good};
        case CheckResult::Warning:
            return {"warning", Tone::Bad};
        case CheckResult::Fault:
            return {"fault", Tone::Bad};
        default:
            return {"skipped", Tone::Quiet};
        }
    }

    bool logsOn_ = false;
};

} // namespace

void addDoctorCommand(Commands& commands) {
    commands.push_back(std::make_unique<DoctorCommand>());
}

} // namespace zan::cli
