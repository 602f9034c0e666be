/// What holds for every command: which engine, who asks, how the output looks.
///
/// Threads: values and functions without shared state.
#ifndef ZANENGINE_APPS_ZAN_SETTINGS_H
#define ZANENGINE_APPS_ZAN_SETTINGS_H

#include <functional>
#include <string>
#include <vector>

namespace zan::cli {

/// As the options of the command line gave them; empty where they did not.
struct GlobalOptions {
    std::string url;
    std::string user;
    std::string secret;
    std::string config;
    std::string color = "auto";
    std::string dictionary;
    std::string diagnostics;
    bool isJson = false;
    bool isRaw = false;
    bool showsSecrets = false;
};

/// Where something is configured, with what was found there.
struct Settings {
    std::string url;
    std::string user;
    std::string secret;
    /// Where the URL was found, for people: `--url`, `ZAN_URL` or the config file. Empty: nowhere.
    std::string urlFrom;
    /// The config file that was looked for.
    std::string configFile;
    /// Whether passwords in messages are printed as they are.
    bool showsSecrets = false;
    /// One line each, for standard error.
    std::vector<std::string> warnings;
};

/// What a config file sets.
struct ConfigFile {
    std::string url;
    std::string user;
    std::string secret;
};

/// Looks a variable of the environment up; empty when it is not set.
using Environment = std::function<std::string(std::string const&)>;

/// The environment of the process.
std::string environment(std::string const& name);

/// `$XDG_CONFIG_HOME/zan/config`, or `~/.config/zan/config`.
std::string defaultConfigFile(Environment const& variables);

/// Reads `key = value` lines; `#` begins a comment line. Throws `WrongConfigurationException` with
/// file, line and what would be right.
ConfigFile readConfigFile(std::string const& file);

/// Options go before the environment, and that before the config file. A config file that is not
/// there is no error unless an option names it. Throws `WrongConfigurationException`.
Settings resolve(GlobalOptions const& options, Environment const& variables);

} // namespace zan::cli

#endif
