/// Between the text of FIX messages and QuickFIX's message objects.
#ifndef ZANENGINE_SERVER_SESSIONS_QUICKFIXMESSAGES_H
#define ZANENGINE_SERVER_SESSIONS_QUICKFIXMESSAGES_H

#include "server/sessions/FixMessage.h"
#include "server/sessions/MessageFault.h"
#include "server/sessions/NumberRanges.h"

#include <string>

#include <quickfix/Message.h>
#include <quickfix/SessionID.h>

namespace zan {
namespace server {

/// What a session expects of a message that comes in.
struct Expectations {
    FIX::SessionID session;
    MessageCheck const* check; ///< not owned; may be null
    bool takesEmptyValues;
};

/// Makes of a framed message what a session needs to judge it: the header, and for administrative
/// messages the body. The body of an application message is only looked at for being fields at
/// all, and by `check` where there is one: fields that are unknown, repeated or in no group reach
/// the application unharmed. Fields of the header are taken wherever they stand. Where the names or
/// the time are missing, what the session expects stands for them, and that is the fault.
void readMessage(std::string const& text, Expectations const& expected, FIX::Message& message);

/// Why the message that `readMessage` has read has to be refused.
MessageFault faultOf(FIX::Message const& message);

/// Why the sequence numbers in a message cannot be worked with: its own, and the one that a
/// SequenceReset sets or from which a ResendRequest asks. Empty: they can.
std::string numberFault(FIX::Message const& message);

/// A ResendRequest up to a number beyond all asks for everything.
void boundEnd(FIX::Message& message);

/// Puts the text into the message object, so that it stays with a message that has to wait for the
/// ones before it; null where no text was put in.
void keepText(std::string const& text, FIX::Message& message);
std::string const* keptText(FIX::Message const& message);

/// The sequence number; 0 where the message has none.
int sequenceNumber(FIX::Message const& message);

/// Does PossDupFlag say that the message was sent before?
bool isPossDup(FIX::Message const& message);

/// Adds the fields as the body, exactly in their order; those of the header go before it, those of
/// the trailer behind it, those that the session writes itself are passed over.
void writeBody(FixFields const& fields, FIX::Message& message);

/// A message of ours without its body: enough for the session to make the header of its
/// repetition, whatever the body holds.
std::string headOf(std::string const& message);
/// That repetition, with the body that the message had, byte for byte.
std::string withBodyOf(std::string const& message, std::string const& head);
/// An administrative message that stands for a number that cannot be had any more.
std::string placeholder(int number);

/// What a resend request asks for, where `nextOut` is the number of the next message out. False
/// where it cannot be read. The range is empty (its last number below its first) where there is
/// nothing to be sent again.
bool rangeAskedFor(FIX::Message const& request, int nextOut, NumberRange& range);
void askFor(NumberRange range, FIX::Message& request);
/// A request of the counterparty's, under a number that the session does not count.
void makeRequest(NumberRange range, FIX::SessionID const& session, FIX::Message& request);

/// What is wrong with the header of a Logon that QuickFIX refuses without a reason.
std::string faultOfLogon(std::string const& logon, FIX::SessionID const& session);

/// Is MsgType the third field of a framed message?
bool beginsInOrder(std::string const& text);

/// Is a message whose first three fields are in order an administrative one?
bool isAdminText(std::string const& text);

} // namespace server
} // namespace zan

#endif
