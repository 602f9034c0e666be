/// From the model of a message to its fields in the order of the wire.
///
/// Threads: functions without shared state; a dictionary may be read from several threads.
#ifndef ZANENGINE_SERVER_WIRE_GROUPWRITER_H
#define ZANENGINE_SERVER_WIRE_GROUPWRITER_H

#include "message/ZANFieldGroup.h"
#include "server/sessions/FixMessage.h"
#include "server/wire/CompiledDictionary.h"

#include <string>

namespace zan::server {

/// The fields of a message's model: ascending tags at the top, but before the first count what a
/// reader would take for a member of a group in front of it; repeating groups behind the tag that
/// counts them, the members of an instance in the dictionary's order, the length of a data field
/// before it. Counts and lengths are added; where the model holds them they have to be true.
/// Throws `MalformedMessage` for a tag that is not positive, an empty value, a separator in a value
/// that is no data, and a group or a member that the dictionary does not know for `type`.
FixFields writeFields(ZANFieldGroup const& message, std::string const& type,
                      CompiledDictionary const& dictionary);

/// The same without what is not wanted at the top, which may then hold anything.
FixFields writeFields(ZANFieldGroup const& message, std::string const& type,
                      CompiledDictionary const& dictionary, bool (*isWanted)(int tag));

} // namespace zan::server

#endif
