/// What to do about a Logon that was refused for its sequence number.
///
/// Threads: functions without shared state.
#ifndef ZANENGINE_APPS_ZAN_SEQUENCEADVICE_H
#define ZANENGINE_APPS_ZAN_SEQUENCEADVICE_H

#include <string>

namespace zan::cli {

/// Whose words a refusal is made of.
enum class Refuser { Counterparty, Engine };

/// Reads which number was expected and which one came ("expecting 5 but received 3"), tells which
/// side is wrong, and the command that mends it. Empty for a text of another kind.
std::string sequenceAdvice(std::string const& refusal, Refuser refuser,
                           std::string const& connection);

} // namespace zan::cli

#endif
