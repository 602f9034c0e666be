/// The session file: which connections an engine has, in QuickFIX's own format.
///
/// `[SESSION]` opens a connection, `[DEFAULT]` holds what all connections share, `key=value` stands
/// on a line of its own, `#` begins a line of comment. Keys are the ones of QuickFIX and four of
/// this engine: `ConnectionName` (default `SenderCompID->TargetCompID`), `Durability`,
/// `LogonTimeout` (seconds) and `ConnectAtStart`.
///
/// Threads: plain functions and values; nothing is shared.
#ifndef ZANENGINE_SERVER_CONFIG_SESSIONFILE_H
#define ZANENGINE_SERVER_CONFIG_SESSIONFILE_H

#include <chrono>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace zan::server {

/// One connection of the file, checked: every key is known and every value is of its kind.
struct ConnectionSettings {
    std::string name;
    /// `BeginString:SenderCompID->TargetCompID`, with `:SessionQualifier` behind when there is one.
    std::string sessionId;
    std::chrono::seconds logonTimeout{10};
    /// What holds for this connection, defaults included, with keys in their proper spelling.
    std::vector<std::pair<std::string, std::string>> keys;

    /// The value of a key, or `otherwise` when the file does not set it.
    std::string valueOf(std::string_view key, std::string const& otherwise = {}) const;
};

/// The connections of a file, in its order. Throws `WrongConfigurationException` that tells the
/// file, the line, the key and what would be right: for a file that cannot be read or holds no
/// session, a line that is neither section nor setting, a key that is unknown, missing or set
/// twice in a section, a bad value, and a connection name or session that another one has.
std::vector<ConnectionSettings> readSessionFile(std::string const& file);

/// The same for text that is already read; `file` is its name in errors.
std::vector<ConnectionSettings> parseSessionText(std::string_view text, std::string const& file);

} // namespace zan::server

#endif
