#include "server/sessions/MessageFault.h"

namespace zan {
namespace server {

char const* textOf(RejectReason reason) {
    switch (reason) {
    case RejectReason::none:
        break;
    case RejectReason::invalidTag:
        return "Invalid tag number";
    case RejectReason::requiredTagMissing:
        return "Required tag missing";
    case RejectReason::tagNotOfType:
        return "Tag not defined for this message type";
    case RejectReason::noValue:
        return "Tag specified without a value";
    case RejectReason::wrongValue:
        return "Value is incorrect (out of range) for this tag";
    case RejectReason::wrongFormat:
        return "Incorrect data format for value";
    case RejectReason::invalidType:
        return "Invalid MsgType";
    case RejectReason::repeatedTag:
        return "Tag appears more than once";
    case RejectReason::outOfOrder:
        return "Tag specified out of required order";
    case RejectReason::groupOrder:
        return "Repeating group fields out of order";
    case RejectReason::wrongGroupCount:
        return "Incorrect NumInGroup count for repeating group";
    case RejectReason::unsupportedType:
        return "Unsupported Message Type";
    }
    return "";
}

std::string describe(MessageFault const& fault) {
    std::string const text = textOf(fault.reason);
    return fault.tag == FixScanner::noNumber ? text
                                             : text + " (tag " + std::to_string(fault.tag) + ")";
}

} // namespace server
} // namespace zan
