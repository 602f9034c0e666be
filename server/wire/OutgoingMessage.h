/// What an application gives to be sent, checked and made ready for a session.
///
/// Threads: functions without shared state; a dictionary may be read from several threads.
#ifndef ZANENGINE_SERVER_WIRE_OUTGOINGMESSAGE_H
#define ZANENGINE_SERVER_WIRE_OUTGOINGMESSAGE_H

#include "message/ZANFieldGroup.h"
#include "server/sessions/FixMessage.h"
#include "server/wire/CompiledDictionary.h"

#include <string>
#include <string_view>

namespace zan::server {

/// A message without the fields that the session sets itself.
struct OutgoingMessage {
    std::string type;
    FixFields body;

    /// Whether the type is one of the protocol's own: heartbeat, logon and the like.
    bool isAdmin() const;
};

/// A message that was written as text: `tag=value`, separated by SOH where the text holds one and
/// by `|` otherwise. Its fields keep the order of the text. Throws `MalformedMessage`.
///
/// Fields that are the engine's (8, 9, 10, 34, 49, 52, 56, and the message's number and time of a
/// message that came from it) are left out: the engine sets its own.
OutgoingMessage outgoingFromText(std::string_view text, CompiledDictionary const& dictionary);

/// A message that was built as a model. Throws `MalformedMessage`.
OutgoingMessage outgoingFromModel(ZANFieldGroup const& message,
                                  CompiledDictionary const& dictionary);

/// The fields that a connection adds to its Logon. A type, where there is one, has to be the
/// Logon's. Throws `MalformedMessage`.
FixFields logonFieldsFromModel(ZANFieldGroup const& fields, CompiledDictionary const& dictionary);

} // namespace zan::server

#endif
