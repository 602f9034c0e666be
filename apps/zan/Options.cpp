#include "apps/zan/Options.h"

#include "apps/zan/CommandTree.h"

#include <CLI/CLI.hpp>

#include <limits>

namespace zan::cli {

CLI::App& addCommand(CLI::App& program, std::string const& name, std::string const& description,
                     std::string const& details) {
    return *program.add_subcommand(name, description)->footer(details);
}

CLI::App& addHiddenCommand(CLI::App& program, std::string const& name) {
    return *program.add_subcommand(name)->group("");
}

void requireCommand(CLI::App& program) {
    program.require_subcommand(1);
}

bool isGiven(CLI::App const& command) {
    return command.parsed();
}

Options& Options::text(std::string& value, std::string const& name, std::string const& kind,
                       std::string const& description) {
    last_ = command_.add_option(name, value, description)->type_name(kind);
    return *this;
}

Options& Options::texts(std::vector<std::string>& values, std::string const& name,
                        std::string const& kind, std::string const& description) {
    last_ = command_.add_option(name, values, description)->type_name(kind);
    return *this;
}

Options& Options::flag(bool& value, std::string const& name, std::string const& description) {
    last_ = command_.add_flag(name, value, description);
    return *this;
}

Options& Options::number(long& value, std::string const& name, long least,
                         std::string const& description) {
    last_ = command_.add_option(name, value, description)
                ->type_name("NUMBER")
                ->check(CLI::Range(least, std::numeric_limits<long>::max()).description(""));
    return *this;
}

Options& Options::seconds(double& value, std::string const& name, std::string const& description) {
    constexpr double aDay = 86400;
    last_ = command_.add_option(name, value, description)
                ->type_name("SECONDS")
                ->check(CLI::Range(0.0, aDay).description(""));
    return *this;
}

Options& Options::choice(std::string& value, std::string const& name, std::string const& kind,
                         std::string const& description) {
    text(value, name, kind, description);
    // The kind has told the values already.
    last_->check(CLI::IsMember(choicesOf(kind)).description(""));
    return *this;
}

Options& Options::required() {
    last_->required();
    return *this;
}

Options& Options::excludes(std::string const& other) {
    last_->excludes(command_.get_option(other));
    return *this;
}

Options& Options::needs(std::string const& other) {
    last_->needs(command_.get_option(other));
    return *this;
}

Options& Options::connection(std::string& value) {
    return text(value, "name", connectionKind, "the connection").required();
}

Options& Options::onlyConnection(std::string& value) {
    return text(value, "name", connectionKind,
                "the connection; may be left out when there is only one");
}

Options& Options::allConnections(std::string& value) {
    return text(value, "name", connectionKind, "the connection; all of them without it");
}

Options& Options::stream(std::string& value) {
    return text(value, "--stream", "admin-in|admin-out|app-in|app-out|resent|all",
                "only this stream, by name or number; all without it");
}

Options& Options::where(std::string& value) {
    return text(value, "--where", expressionKind,
                "only what this is true of, such as \"type = '8' AND Symbol = 'IBM'\"");
}

Options& Options::yes(bool& value) {
    return flag(value, "-y,--yes", "do not ask");
}

Options& Options::connects(bool& value) {
    return flag(value, "--connect", "log the connection on where it is not");
}

} // namespace zan::cli
