#include "apps/zan/Settings.h"

#include "infra/WrongConfigurationException.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

namespace zan::cli {

namespace {

std::string trimmed(std::string const& text) {
    constexpr char const* blanks = " \t\r";
    std::size_t const first = text.find_first_not_of(blanks);
    return first == std::string::npos
               ? ""
               : text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

void takeLine(ConfigFile& config, std::string const& line, std::string const& place) {
    std::size_t const equals = line.find('=');
    if (equals == std::string::npos) {
        throw WrongConfigurationException(
            place + ": no setting; a line such as url = embedded:sessions.cfg "
                    "would be right");
    }
    std::string const key = trimmed(line.substr(0, equals));
    std::string* const value = key == "url"      ? &config.url
                               : key == "user"   ? &config.user
                               : key == "secret" ? &config.secret
                                                 : nullptr;
    if (!value) {
        throw WrongConfigurationException(place + ": nobody knows the key \"" + key +
                                          "\"; url, user or secret would be right");
    }
    *value = trimmed(line.substr(equals + 1));
}

bool canOthersRead(std::string const& file) {
    struct stat found {};
    return stat(file.c_str(), &found) == 0 && (found.st_mode & (S_IRGRP | S_IROTH)) != 0;
}

std::string loginName() {
    passwd const* const entry = getpwuid(geteuid());
    return entry ? entry->pw_name : "";
}

// The first of these that is set.
std::string firstOf(std::string const& option, std::string const& variable,
                    std::string const& inFile) {
    return !option.empty() ? option : !variable.empty() ? variable : inFile;
}

bool holdsPassword(std::string const& url) {
    std::size_t const host = url.find("://");
    std::size_t const at = url.find('@');
    return host != std::string::npos && at != std::string::npos &&
           url.substr(host + 3, at - host - 3).find(':') != std::string::npos;
}

void warnAboutSecrets(Settings& settings, GlobalOptions const& options, bool isSecretInFile) {
    if (!options.secret.empty() || holdsPassword(options.url)) {
        settings.warnings.emplace_back(
            "a secret on the command line can be seen by others; ZAN_SECRET or the config file "
            "would be right");
    }
    if (isSecretInFile && canOthersRead(settings.configFile)) {
        settings.warnings.push_back(settings.configFile +
                                    " holds a secret and others can read it; chmod 600 would be "
                                    "right");
    }
}

} // namespace

std::string environment(std::string const& name) {
    char const* const value = std::getenv(name.c_str());
    return value ? value : "";
}

std::string defaultConfigFile(Environment const& variables) {
    std::string const folder = variables("XDG_CONFIG_HOME");
    // A folder that is not absolute is to be ignored, says the convention.
    return (folder.starts_with('/') ? folder : variables("HOME") + "/.config") + "/zan/config";
}

ConfigFile readConfigFile(std::string const& file) {
    std::ifstream input(file);
    if (!input) {
        throw WrongConfigurationException(file + ": cannot be read: " + std::strerror(errno));
    }
    ConfigFile config;
    std::string line;
    for (int number = 1; std::getline(input, line); ++number) {
        std::string const setting = trimmed(line);
        if (!setting.empty() && setting.front() != '#') {
            takeLine(config, setting, file + ":" + std::to_string(number));
        }
    }
    return config;
}

Settings resolve(GlobalOptions const& options, Environment const& variables) {
    Settings settings;
    settings.configFile = options.config.empty() ? defaultConfigFile(variables) : options.config;
    bool const isThere = access(settings.configFile.c_str(), F_OK) == 0;
    ConfigFile const file =
        isThere || !options.config.empty() ? readConfigFile(settings.configFile) : ConfigFile{};
    settings.url = firstOf(options.url, variables("ZAN_URL"), file.url);
    settings.urlFrom = !options.url.empty()            ? "--url"
                       : !variables("ZAN_URL").empty() ? "ZAN_URL"
                       : !file.url.empty()             ? settings.configFile
                                                       : "";
    settings.user = firstOf(options.user, variables("ZAN_USER"), file.user);
    if (settings.user.empty()) {
        settings.user = loginName();
    }
    settings.secret = firstOf(options.secret, variables("ZAN_SECRET"), file.secret);
    settings.showsSecrets = options.showsSecrets;
    warnAboutSecrets(settings, options, !file.secret.empty());
    return settings;
}

} // namespace zan::cli
