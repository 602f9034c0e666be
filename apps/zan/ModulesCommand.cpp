// modules: which adapter modules there are, and whether they can be loaded.
#include "apps/zan/AdapterModules.h"
#include "apps/zan/Command.h"
#include "infra/DynamicMethod.h"

#include <iostream>

namespace zan::cli {

namespace {

class ModulesCommand final : public Command {
public:
    void addTo(CLI::App& program) override {
        app_ =
            &addCommand(program, "modules", "Lists the adapter modules, and why one cannot be used",
                        "They are looked for in the folders of ZAN_ADAPTER_PATH and in the folder "
                        "of installed modules. Each is loaded in a process of its own. It needs "
                        "no engine, and no URL.");
    }

    ExitCode run(Context& context) override {
        std::vector<FoundModule> const modules = findModules();
        if (modules.empty()) {
            tellFolders();
        }
        bool areGood = !modules.empty();
        for (FoundModule const& module : modules) {
            context.interrupt.check();
            ModuleReport const report = tryModule(module.file, module.protocol);
            context.output.print(
                {{"protocol", module.protocol},
                 {"usable", report.isGood, "", report.isGood ? Tone::Good : Tone::Bad},
                 {"shadowed", module.isShadowed},
                 {"abi", report.abi, report.abi.empty() ? "not told" : ""},
                 {"file", module.file},
                 {"problem", report.problem}});
            areGood = areGood && report.isGood;
        }
        return areGood ? ExitCode::Ok : ExitCode::CheckFailed;
    }

private:
    static void tellFolders() {
        std::cerr << "zan: there is no adapter module in";
        for (std::string const& folder : getModuleFolders()) {
            std::cerr << ' ' << printable(folder);
        }
        std::cerr << "; ZAN_ADAPTER_PATH names more folders" << std::endl;
    }
};

} // namespace

void addModulesCommand(Commands& commands) {
    commands.push_back(std::make_unique<ModulesCommand>());
}

} // namespace zan::cli
