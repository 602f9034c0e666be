/// Message bodies as the echo engine takes them: of its own, shared with nobody.
#ifndef ECHO_ADAPTER_ECHOMESSAGES_H
#define ECHO_ADAPTER_ECHOMESSAGES_H

#include "message/ZANMessage.h"

#include <string>

/// A deep copy of the message's body. A `ZANInvalidMessageException` when it has none, or no type.
counted_ptr<ZANFieldGroup> copyOfBody(counted_ptr<ZANMessage> const& message);

/// Reads fields `tag=value`, separated by SOH or by `|`. A `ZANInvalidMessageException` for any
/// other text.
counted_ptr<ZANFieldGroup> readBody(std::string const& text);

#endif
