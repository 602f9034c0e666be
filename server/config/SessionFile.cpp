#include "server/config/SessionFile.h"

#include "infra/WrongConfigurationException.h"
#include "server/config/SessionKeys.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <optional>

namespace zan::server {

namespace {

struct Setting {
    std::string key;
    std::string value;
    int line;
};

struct Section {
    bool isDefault;
    int line;
    std::vector<Setting> settings;

    Setting const* find(std::string_view key) const {
        auto const found = std::ranges::find(settings, key, &Setting::key);
        return found == settings.end() ? nullptr : &*found;
    }
};

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view blanks = " \t\r";
    std::size_t const first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

std::string inQuotes(std::string_view text) {
    return '"' + std::string(text) + '"';
}

// Reads the sections of one text, then makes connections of them.
class SessionText {
public:
    explicit SessionText(std::string const& file) : file_(file) {}

    std::vector<ConnectionSettings> read(std::string_view text) {
        readLines(text);
        std::vector<ConnectionSettings> connections;
        for (Section const& section : sections_) {
            if (!section.isDefault) {
                connections.push_back(makeConnection(section));
            }
        }
        if (connections.empty()) {
            fail(line_, "no [SESSION]: a file needs one for each connection");
        }
        return connections;
    }

private:
    [[noreturn]] void fail(int line, std::string const& what) const {
        throw WrongConfigurationException(file_ + ":" + std::to_string(line) + ": " + what);
    }

    void readLines(std::string_view text) {
        while (!text.empty()) {
            std::size_t const end = text.find('\n');
            ++line_;
            readLine(trimmed(text.substr(0, end)));
            text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
        }
    }

    void readLine(std::string_view line) {
        if (line.empty() || line.front() == '#') {
            return;
        }
        if (line.front() == '[') {
            openSection(line);
            return;
        }
        std::size_t const equals = line.find('=');
        if (equals == std::string_view::npos) {
            fail(line_, inQuotes(line) + " is neither a section nor key=value");
        }
        addSetting(trimmed(line.substr(0, equals)), trimmed(line.substr(equals + 1)));
    }

    void openSection(std::string_view line) {
        if (line != "[DEFAULT]" && line != "[SESSION]") {
            fail(line_, inQuotes(line) + " is no section; [DEFAULT] or [SESSION] would be right");
        }
        bool const isDefault = line == "[DEFAULT]";
        if (isDefault && defaults()) {
            fail(line_,
                 "[DEFAULT] stands a second time, after line " + std::to_string(defaults()->line));
        }
        sections_.push_back({isDefault, line_, {}});
    }

    Section const* defaults() const {
        auto const found = std::ranges::find(sections_, true, &Section::isDefault);
        return found == sections_.end() ? nullptr : &*found;
    }

    void addSetting(std::string_view name, std::string_view value) {
        if (sections_.empty()) {
            fail(line_, std::string(name) + ": stands before the first section; [DEFAULT] or "
                                            "[SESSION] has to come first");
        }
        std::optional<SessionKey> const key = findSessionKey(name);
        if (!key) {
            failUnknownKey(name);
        }
        if (Setting const* first = sections_.back().find(key->name)) {
            fail(line_, key->name + ": is set already on line " + std::to_string(first->line));
        }
        std::string_view const right = whatWouldBeRight(key->rule, value);
        if (!right.empty()) {
            fail(line_, key->name + "=" + std::string(value) + ": " + std::string(right));
        }
        sections_.back().settings.push_back({key->name, properValue(key->rule, value), line_});
    }

    [[noreturn]] void failUnknownKey(std::string_view name) const {
        std::string_view const nearest = nearestSessionKey(name);
        fail(line_, std::string(name) + ": nobody knows this key" +
                        (nearest.empty() ? "; the keys of QuickFIX, ConnectionName, Durability "
                                           "and LogonTimeout would be right"
                                         : "; " + std::string(nearest) + " would be right"));
    }

    ConnectionSettings makeConnection(Section const& section) {
        Section const effective = withDefaults(section);
        for (RequiredKey const& key : requiredSessionKeys()) {
            if (!effective.find(key.name)) {
                fail(section.line, std::string(key.name) + ": is missing, here and in [DEFAULT]; " +
                                       std::string(key.name) + "=" + std::string(key.example) +
                                       " could stand here");
            }
        }
        checkPartners(effective);
        checkFiles(effective);
        ConnectionSettings connection;
        for (Setting const& setting : effective.settings) {
            connection.keys.emplace_back(setting.key, setting.value);
        }
        connection.logonTimeout =
            std::chrono::seconds(std::stol(connection.valueOf("LogonTimeout", "10")));
        nameConnection(connection, section);
        return connection;
    }

    Section withDefaults(Section const& section) const {
        Section effective{false, section.line, {}};
        if (Section const* shared = defaults()) {
            std::ranges::copy_if(
                shared->settings, std::back_inserter(effective.settings),
                [&](Setting const& setting) { return !section.find(setting.key); });
        }
        std::ranges::copy(section.settings, std::back_inserter(effective.settings));
        return effective;
    }

    // Keys that QuickFIX takes only together.
    void checkPartners(Section const& section) const {
        constexpr std::string_view pairs[][2] = {
            {"StartDay", "EndDay"}, {"LogonTime", "LogoutTime"}, {"LogonDay", "LogoutDay"}};
        for (auto const& [first, second] : pairs) {
            requirePartner(section, first, second);
            requirePartner(section, second, first);
        }
        for (Setting const& setting : section.settings) {
            constexpr std::string_view host = "SocketConnectHost";
            if (setting.key.starts_with(host) && setting.key.size() > host.size()) {
                requirePartner(section, setting.key,
                               "SocketConnectPort" + setting.key.substr(host.size()));
            }
        }
        Setting const& version = *section.find("BeginString");
        if (version.value == "FIXT.1.1" && !section.find("DefaultApplVerID")) {
            fail(version.line, "DefaultApplVerID: is missing, and BeginString=FIXT.1.1 needs it");
        }
    }

    void requirePartner(Section const& section, std::string_view key,
                        std::string_view partner) const {
        Setting const* const setting = section.find(key);
        if (setting && !section.find(partner)) {
            fail(setting->line,
                 std::string(partner) + ": is missing, and " + setting->key + " needs it");
        }
    }

    void checkFiles(Section const& section) const {
        for (std::string_view const key :
             {"DataDictionary", "TransportDataDictionary", "AppDataDictionary"}) {
            Setting const* const setting = section.find(key);
            if (setting && !std::ifstream(setting->value)) {
                fail(setting->line, setting->key + "=" + setting->value + ": cannot be read (" +
                                        std::strerror(errno) +
                                        "); the path of a data dictionary would be right");
            }
        }
    }

    void nameConnection(ConnectionSettings& connection, Section const& section) {
        std::string const route =
            connection.valueOf("SenderCompID") + "->" + connection.valueOf("TargetCompID");
        connection.name = connection.valueOf("ConnectionName", route);
        std::string const qualifier = connection.valueOf("SessionQualifier");
        connection.sessionId = connection.valueOf("BeginString") + ":" + route +
                               (qualifier.empty() ? "" : ":" + qualifier);
        claim(sessionIds_, connection.sessionId, section.line, "SenderCompID: the session ",
              "another company id or a SessionQualifier");
        claim(names_, connection.name, section.line, "ConnectionName: the name ",
              "a ConnectionName of its own");
    }

    void claim(std::map<std::string, int>& taken, std::string const& id, int line,
               std::string const& what, std::string const& right) const {
        auto const [place, isFirst] = taken.emplace(id, line);
        if (!isFirst) {
            fail(line, what + inQuotes(id) + " belongs to the [SESSION] on line " +
                           std::to_string(place->second) + " already; " + right +
                           " would be right");
        }
    }

    std::string const& file_;
    int line_ = 0;
    std::vector<Section> sections_;
    std::map<std::string, int> names_;
    std::map<std::string, int> sessionIds_;
};

} // namespace

std::string ConnectionSettings::valueOf(std::string_view key, std::string const& otherwise) const {
    auto const found = std::ranges::find(keys, key, &std::pair<std::string, std::string>::first);
    return found == keys.end() ? otherwise : found->second;
}

std::vector<ConnectionSettings> parseSessionText(std::string_view text, std::string const& file) {
    constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
    if (text.starts_with(byteOrderMark)) {
        text.remove_prefix(byteOrderMark.size());
    }
    return SessionText(file).read(text);
}

std::vector<ConnectionSettings> readSessionFile(std::string const& file) {
    std::error_code error;
    if (std::filesystem::is_directory(file, error)) {
        throw WrongConfigurationException(file +
                                          ": is a folder; a session file would be right here");
    }
    std::ifstream input(file, std::ios::binary);
    if (!input) {
        throw WrongConfigurationException(file + ": cannot be read (" + std::strerror(errno) +
                                          "); the path of a session file would be right here");
    }
    std::string const text{std::istreambuf_iterator<char>(input), {}};
    return parseSessionText(text, file);
}

} // namespace zan::server
