#include "server/engine/ConnectionSetup.h"

#include "infra/WrongConfigurationException.h"
#include "server/config/SessionKeys.h"
#include "server/dictionaries/Dictionaries.h"
#include "server/wire/Secrets.h"
#include "server/wire/SharedDictionary.h"

#include <algorithm>
#include <filesystem>
#include <iterator>

namespace zan::server {

namespace {

// Stores and logs of a file that other programs share: the engine keeps its own log.
bool isReplaced(std::string_view key) {
    return key == "FileStorePath";
}

std::string line(std::string const& key, std::string const& value, bool isSecret) {
    return key + "=" + (isSecret ? "***" : value) + "\n";
}

DictionaryText textOf(std::string const& path, std::string_view builtIn,
                      std::string const& version) {
    return path.empty() ? DictionaryText{std::string(builtIn), version}
                        : DictionaryText{readDictionaryFile(path), path};
}

} // namespace

std::shared_ptr<CompiledDictionary const> loadDictionary(ConnectionSettings const& settings) {
    std::string const version = settings.valueOf("BeginString");
    bool const isFixt = version == "FIXT.1.1";
    std::string const common = settings.valueOf("DataDictionary");
    std::string const path = isFixt ? settings.valueOf("AppDataDictionary", common) : common;
    try {
        DictionaryText const messages = textOf(path, dictionaryFor(version), version);
        if (!isFixt) {
            return sharedDictionary(messages, nullptr);
        }
        DictionaryText const transport =
            textOf(settings.valueOf("TransportDataDictionary"), transportDictionary(), version);
        return sharedDictionary(messages, &transport);
    } catch (BadDictionary const& e) {
        throw WrongConfigurationException("connection " + settings.name + ": " + e.what());
    }
}

LogSettings logSettings(ConnectionSettings const& settings, std::string const& dataFolder) {
    return {(std::filesystem::absolute(dataFolder) / (settings.name + ".log")).string(),
            settings.valueOf("Durability", "normal") == "full"};
}

SessionHours hoursOf(ConnectionSettings const& settings) {
    try {
        return SessionHours(settings.keys);
    } catch (std::runtime_error const& e) {
        throw WrongConfigurationException("connection " + settings.name + ": " + e.what());
    }
}

std::string addressOf(ConnectionSettings const& settings) {
    return settings.valueOf("SocketConnectHost") + ":" + settings.valueOf("SocketConnectPort");
}

ValidationSettings validationSettings(ConnectionSettings const& settings) {
    auto const isSet = [&](std::string_view key, std::string const& otherwise) {
        return settings.valueOf(key, otherwise) == "Y";
    };
    std::string const dictionary = settings.valueOf("UseDataDictionary", "N");
    ValidationSettings validation;
    validation.useDictionary = dictionary == "Y";
    validation.fieldsOutOfOrder = isSet("ValidateFieldsOutOfOrder", dictionary);
    validation.userDefinedFields = isSet("ValidateUserDefinedFields", "Y");
    validation.allowUnknownFields = isSet("AllowUnknownMsgFields", "N");
    validation.applicationVersion = settings.valueOf("DefaultApplVerID");
    validation.version = settings.valueOf("BeginString");
    return validation;
}

FixSessionSettings sessionSettings(ConnectionSettings const& settings, FixSessionStore& store,
                                   MessageCheck const& check) {
    FixSessionSettings session;
    std::ranges::copy_if(settings.keys, std::back_inserter(session.keys), [](auto const& entry) {
        return !isEngineKey(entry.first) && !isReplaced(entry.first);
    });
    session.store = &store;
    session.check = &check;
    session.takesEmptyValues = settings.valueOf("ValidateFieldsHaveValues", "Y") == "N";
    return session;
}

std::string propertiesText(ConnectionSettings const& settings, std::string const& logFile,
                           FixFields const& logonFields) {
    constexpr std::string_view ours[] = {"ConnectionName", "Durability", "LogonTimeout"};
    std::string text = line("ConnectionName", settings.name, false);
    for (auto const& [key, value] : settings.keys) {
        if (std::ranges::find(ours, key) == std::end(ours) && !isReplaced(key)) {
            text += line(key, value, isSecretKey(key));
        }
    }
    text += line("LogonTimeout", std::to_string(settings.logonTimeout.count()), false);
    text += line("Durability", settings.valueOf("Durability", "normal"), false);
    text += line("MessageLog", logFile, false);
    for (FixField const& field : logonFields) {
        text += line("Logon." + std::to_string(field.tag), field.value, isSecretTag(field.tag));
    }
    return text;
}

} // namespace zan::server
