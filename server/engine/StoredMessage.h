/// Between the entries of the message log and the messages that applications know.
///
/// Threads: functions without shared state; a dictionary may be read from several threads.
#ifndef ZANENGINE_SERVER_ENGINE_STOREDMESSAGE_H
#define ZANENGINE_SERVER_ENGINE_STOREDMESSAGE_H

#include "infra/counted_ptr.h"
#include "message/ZANMessage.h"
#include "server/config/SessionFile.h"
#include "server/sessions/FixSession.h"
#include "server/wire/CompiledDictionary.h"
#include "server/wire/OutgoingMessage.h"

#include <string>

namespace zan::server {

/// How a stored message is shown.
enum class Showing {
    AsStored,
    PossiblyLost, ///< with PossResend (97): the listener may have had it
    ForResend     ///< with PossDupFlag (43) and OrigSendingTime (122), as a resend request gets it
};

/// The message with its connection message id (16580), the time when it was stored (16577) and its
/// stream (16581).
counted_ptr<ZANMessage> modelOf(FixEntry const& entry, CompiledDictionary const& dictionary,
                                Showing showing = Showing::AsStored);

/// The fields of a message that an application gave. Throws `MalformedMessage` when there are none.
ZANFieldGroup const& fieldsOf(counted_ptr<ZANMessage> const& message);

bool isAdmin(FixStream stream);

/// Whether listeners get entries of this origin.
bool isDelivered(FixOrigin origin);

/// A message that applications of this side tell each other: it is from and to our own name.
FixEntry internalEntry(OutgoingMessage const& message, ConnectionSettings const& settings);

/// A message to be put into the log as it is, with the header fields that it has; they also tell
/// its stream. Throws `MalformedMessage`.
FixEntry insertedEntry(ZANFieldGroup const& message, ConnectionSettings const& settings,
                       CompiledDictionary const& dictionary);

/// A message that was sent, ready to be sent again under a new number, marked with PossResend (97).
/// Throws `MalformedMessage`.
FixOutgoing resendOf(FixEntry const& entry, CompiledDictionary const& dictionary);

} // namespace zan::server

#endif
