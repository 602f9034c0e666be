/// The keys that a session file may hold, and what each of them accepts.
///
/// Threads: everything here is constant and may be used from any thread.
#ifndef ZANENGINE_SERVER_CONFIG_SESSIONKEYS_H
#define ZANENGINE_SERVER_CONFIG_SESSIONKEYS_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zan::server {

/// What the value of a key has to look like.
enum class ValueRule {
    Text,
    Identifier,
    Flag,
    Port,
    Number,
    PositiveNumber,
    TimeOfDay,
    Day,
    Version,
    ApplicationVersion,
    InitiatorOnly,
    Durability,
    NoTls,
};

/// One key: its name as QuickFIX, or this engine, spells it.
struct SessionKey {
    std::string name;
    ValueRule rule;
};

/// The key of that name, in whatever case it is written; none when nobody knows it. The keys for
/// further hosts to connect to (`SocketConnectHost1`, `SocketConnectPort1` and so on) are known.
std::optional<SessionKey> findSessionKey(std::string_view name);

/// The known key that is spelled most like `name`, for the text of an error; empty when none is
/// near.
std::string_view nearestSessionKey(std::string_view name);

/// Empty when the value is good; otherwise what would be right, as the end of a sentence.
std::string_view whatWouldBeRight(ValueRule rule, std::string_view value);

/// A good value in its proper spelling: `Y` for `y`, 9 for `FIX.5.0SP2`.
std::string properValue(ValueRule rule, std::string_view value);

/// A key that every session needs, and a value that could stand there.
struct RequiredKey {
    std::string_view name;
    std::string_view example;
};
std::vector<RequiredKey> const& requiredSessionKeys();

/// True for the keys that are this engine's own and mean nothing to QuickFIX.
bool isEngineKey(std::string_view name);

/// True when the value of the key must never be shown.
bool isSecretKey(std::string_view name);

} // namespace zan::server

#endif
