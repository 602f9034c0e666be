/// Between the text of FIX messages and QuickFIX's message objects.
#ifndef ZANENGINE_SERVER_SESSIONS_QUICKFIXMESSAGES_H
#define ZANENGINE_SERVER_SESSIONS_QUICKFIXMESSAGES_H

#include "server/sessions/FixMessage.h"
#include "server/sessions/GroupDictionary.h"

#include <string>

#include <quickfix/DataDictionaryProvider.h>
#include <quickfix/Message.h>

namespace zan {
namespace server {

/// Makes of a framed message what a session needs to judge it: the header, for administrative
/// messages the body, and the text itself, so that it stays with a message that has to wait for
/// the ones before it. The body of an application message is only looked at for being fields at
/// all: fields that are unknown, repeated or in no group reach the application unharmed.
void readMessage(std::string const& text, FIX::Message& message);

/// The text that `readMessage` has put in.
std::string const& textOf(FIX::Message const& message);

/// Throws FIX::IncorrectDataFormat where `readMessage` found bytes that are no field.
void checkFields(FIX::Message const& message);

/// Adds the fields as the body, exactly in their order; header fields among them go to the header,
/// those that the session writes itself are passed over.
void writeBody(FixFields const& fields, FIX::Message& message);

/// For reading messages back that are to be sent again: knows the groups and the data fields and
/// finds nothing wrong with any message.
FIX::DataDictionaryProvider makeDictionaries(std::string const& beginString,
                                             GroupDictionary const& groups);

/// The type (35) of a message whose first three fields are in order; is it an administrative one?
bool isAdminText(std::string const& text);

} // namespace server
} // namespace zan

#endif
