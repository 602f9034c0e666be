/// The sequence numbers that an application sets with the fields of its Logon.
///
/// Threads: functions and values without shared state.
#ifndef ZANENGINE_SERVER_ENGINE_LOGONNUMBERS_H
#define ZANENGINE_SERVER_ENGINE_LOGONNUMBERS_H

#include "message/ZANFieldGroup.h"
#include "server/sessions/FixMessage.h"

#include <optional>
#include <string>
#include <vector>

namespace zan::server {

struct LogonNumbers {
    std::optional<int> nextOut; ///< tag 34
    std::optional<int> nextIn;  ///< tag 789
    bool isReset = false;       ///< tag 141 is Y: both are 1, and the counterparty is asked for it
};

/// Throws `MalformedMessage` naming the tag and what would be right.
LogonNumbers logonNumbersOf(ZANFieldGroup const& fields);

/// What the Logon itself carries: 34 is in its header, 789 would be wrong in the Logons that follow
/// by themselves, and 141=Y is added until the counterparty has agreed.
FixFields withoutNumbers(FixFields fields);

} // namespace zan::server

#endif
