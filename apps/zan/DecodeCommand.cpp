// decode: what a FIX message says, without an engine.
#include "apps/zan/Command.h"
#include "apps/zan/FixLine.h"
#include "apps/zan/InputLines.h"
#include "apps/zan/MessageView.h"
#include "server/wire/FieldText.h"
#include "server/wire/Secrets.h"

namespace zan::cli {

namespace {

class DecodeCommand final : public Command {
public:
    void addTo(CLI::App& program) override {
        app_ = &addCommand(program, "decode", "Explains FIX messages field by field",
                           "Checks length and checksum. It needs no engine, and no URL.");
        Options(*app_).text(file_, "file", fileKind,
                            "a file with a message a line, whatever stands before it; standard "
                            "input without it");
    }

    ExitCode run(Context& context) override {
        InputLines lines(file_, context.interrupt);
        long long count = 0;
        bool isSound = true;
        for (std::string line; lines.next(line);) {
            std::string const message = messageIn(line);
            if (!message.empty()) {
                isSound = show(++count, message, context) && isSound;
                context.output.flush();
            }
        }
        if (count == 0) {
            throw server::MalformedMessage(
                "there is no FIX message in the input; a line such as 8=FIX.4.4|9=5|35=0|10=163| "
                "would be right");
        }
        return isSound ? ExitCode::Ok : ExitCode::CheckFailed;
    }

private:
    static bool show(long long number, std::string const& whole, Context& context) {
        std::vector<std::string> const faults = frameFaults(whole);
        std::string const message =
            context.settings.showsSecrets ? whole : server::maskSecrets(whole);
        if (context.output.format() == OutputFormat::Table) {
            context.output.printText(textOf(message, faults, context));
        } else if (context.output.format() == OutputFormat::Raw) {
            context.output.print({{"text", message}});
        } else {
            printRecords(number, message, faults, context);
        }
        return faults.empty();
    }

    static std::string textOf(std::string const& message, std::vector<std::string> const& faults,
                              Context& context) {
        bool const isColored = context.output.isColored();
        std::string text = viewText(message, context.names, isColored);
        for (std::string const& fault : faults) {
            text += toned("! " + printable(fault), Tone::Bad, isColored) + "\n";
        }
        if (faults.empty() && hasFrame(message)) {
            text += toned("length and checksum are right", Tone::Quiet, isColored) + "\n";
        }
        return text + "\n";
    }

    // One object for each field, and one for each fault.
    static void printRecords(long long number, std::string const& message,
                             std::vector<std::string> const& faults, Context& context) {
        for (Record field : decodedFields(message, context.names)) {
            field.insert(field.begin(), {"message", number});
            field.emplace_back("fault", nullptr);
            context.output.print(field);
        }
        for (std::string const& fault : faults) {
            context.output.print({{"message", number},
                                  {"tag", nullptr},
                                  {"name", nullptr},
                                  {"value", nullptr},
                                  {"meaning", nullptr},
                                  {"depth", nullptr},
                                  {"fault", fault}});
        }
    }

    std::string file_ = "-";
};

} // namespace

void addDecodeCommand(Commands& commands) {
    commands.push_back(std::make_unique<DecodeCommand>());
}

} // namespace zan::cli
