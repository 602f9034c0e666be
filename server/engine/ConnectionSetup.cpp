#include "server/engine/ConnectionSetup.h"

#include "infra/WrongConfigurationException.h"
#include "server/config/SessionKeys.h"
#include "server/dictionaries/Dictionaries.h"

#include <algorithm>
#include <iterator>

namespace zan::server {

namespace {

// The engine keeps the session's numbers in its own folder, wherever else a file points to.
bool isReplaced(std::string_view key) {
    return key == "FileStorePath";
}

bool isSecretTag(int tag) {
    constexpr int secrets[] = {96, 554, 925};
    return std::ranges::find(secrets, tag) != std::end(secrets);
}

std::string line(std::string const& key, std::string const& value, bool isSecret) {
    return key + "=" + (isSecret ? "***" : value) + "\n";
}

} // namespace

GroupDictionary loadDictionary(ConnectionSettings const& settings) {
    std::string const common = settings.valueOf("DataDictionary");
    std::string const path = settings.valueOf("AppDataDictionary", common);
    std::string const version = settings.valueOf("BeginString");
    try {
        return path.empty() ? parseGroups(std::string(dictionaryFor(version)), version)
                            : loadGroups(path);
    } catch (std::runtime_error const& e) {
        throw WrongConfigurationException("connection " + settings.name + ": " + e.what());
    }
}

FixSessionSettings sessionSettings(ConnectionSettings const& settings,
                                   std::string const& dataFolder,
                                   GroupDictionary const& dictionary) {
    FixSessionSettings session;
    std::ranges::copy_if(settings.keys, std::back_inserter(session.keys), [](auto const& entry) {
        return !isEngineKey(entry.first) && !isReplaced(entry.first);
    });
    session.keys.emplace_back("FileStorePath", dataFolder);
    session.groups = dictionary;
    return session;
}

std::string propertiesText(ConnectionSettings const& settings, std::string const& dataFolder,
                           FixFields const& logonFields) {
    std::string text = line("ConnectionName", settings.name, false);
    for (auto const& [key, value] : settings.keys) {
        if (key != "ConnectionName" && key != "LogonTimeout" && !isReplaced(key)) {
            text += line(key, value, isSecretKey(key));
        }
    }
    text += line("LogonTimeout", std::to_string(settings.logonTimeout.count()), false);
    text += line("FileStorePath", dataFolder, false);
    for (FixField const& field : logonFields) {
        text += line("Logon." + std::to_string(field.tag), field.value, isSecretTag(field.tag));
    }
    return text;
}

} // namespace zan::server
