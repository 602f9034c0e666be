/// Why a session refuses a message, and who looks for it.
#ifndef ZANENGINE_SERVER_SESSIONS_MESSAGEFAULT_H
#define ZANENGINE_SERVER_SESSIONS_MESSAGEFAULT_H

#include "server/sessions/FixScanner.h"

#include <string>

namespace zan {
namespace server {

/// Most are values of SessionRejectReason (373).
enum class RejectReason {
    none = -1,
    invalidTag = 0,
    requiredTagMissing = 1,
    tagNotOfType = 2,
    noValue = 4,
    wrongValue = 5,
    wrongFormat = 6,
    invalidType = 11,
    repeatedTag = 13,
    outOfOrder = 14,
    groupOrder = 15,
    wrongGroupCount = 16,
    /// A type that is good but not taken here: answered with a BusinessMessageReject.
    unsupportedType = 1000
};

struct MessageFault {
    RejectReason reason = RejectReason::none;
    /// The tag that is told with it (371): 0 or less may be what came in. `FixScanner::noNumber`
    /// where there is none to tell.
    int tag = FixScanner::noNumber;

    explicit operator bool() const { return reason != RejectReason::none; }
};

/// What the standard says to the reason.
char const* textOf(RejectReason reason);

/// The same with the tag, for people.
std::string describe(MessageFault const& fault);

/// Looks at messages whose fields are fields at all, before the session takes them.
///
/// Threads: for one session's thread at a time.
class MessageCheck {
public:
    virtual ~MessageCheck() = default;

    /// The first fault of a whole message, or none.
    virtual MessageFault check(std::string const& message) const = 0;

protected:
    MessageCheck() = default;
    MessageCheck(MessageCheck const&) = delete;
    MessageCheck& operator=(MessageCheck const&) = delete;
};

} // namespace server
} // namespace zan

#endif
