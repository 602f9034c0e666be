#include "apps/zan/CommandTree.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cctype>
#include <iterator>

namespace zan::cli {

namespace {

OptionEntry entryOf(CLI::Option const& option) {
    OptionEntry entry;
    for (std::string const& name : option.get_snames()) {
        entry.names.push_back("-" + name);
    }
    for (std::string const& name : option.get_lnames()) {
        entry.names.push_back("--" + name);
    }
    if (entry.names.empty()) {
        entry.argument = option.get_name(true);
    }
    bool const isFlag = option.get_items_expected_max() == 0;
    entry.kind = isFlag ? "" : option.get_type_name();
    entry.description = option.get_description();
    entry.isRequired = option.get_required();
    entry.isRepeated = option.get_items_expected_max() > 1;
    return entry;
}

} // namespace

CommandEntry commandTree(CLI::App const& program) {
    CommandEntry tree{program.get_name(), program.get_description(), program.get_footer(), {}, {}};
    for (CLI::Option const* option : program.get_options()) {
        if (!option->get_group().empty()) {
            tree.options.push_back(entryOf(*option));
        }
    }
    for (CLI::App const* command : program.get_subcommands([](CLI::App const*) { return true; })) {
        if (!command->get_group().empty()) {
            tree.commands.push_back(commandTree(*command));
        }
    }
    return tree;
}

std::vector<std::string> choicesOf(std::string const& kind) {
    // Kinds in capitals stand for something; those in small letters for themselves.
    if (kind.find('|') == std::string::npos ||
        std::ranges::any_of(kind, [](unsigned char c) { return std::isupper(c) != 0; })) {
        return {};
    }
    return CLI::detail::split(kind, '|');
}

} // namespace zan::cli
