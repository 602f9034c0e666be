/// What must not be shown to anybody: passwords and the like in messages.
///
/// Threads: functions without shared state.
#ifndef ZANENGINE_SERVER_WIRE_SECRETS_H
#define ZANENGINE_SERVER_WIRE_SECRETS_H

#include <cstddef>
#include <string>

namespace zan::server {

/// Password (554), NewPassword (925), and RawData (96), which holds a secret in a Logon.
bool isSecretTag(int tag);

/// A text for people with `***` in place of each secret. The text may be a message, or hold one or
/// the beginning of one, with SOH or `|` between its fields. RawData (96) is kept where nothing
/// tells that it belongs to a Logon (35=A); behind its length (95) it may hold separators.
std::string maskSecrets(std::string const& text);

/// The longest text of a counterparty's that states and exceptions show, in bytes.
inline constexpr std::size_t longestShownText = 1'000;

/// The text without its secrets, cut after `longestShownText` bytes with a note that it was.
std::string shownText(std::string const& text);

} // namespace zan::server

#endif
