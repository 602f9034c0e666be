/// From the model of a message to the text of a whole message.
///
/// Threads: functions without shared state; a dictionary may be read from several threads.
#ifndef ZANENGINE_SERVER_WIRE_WIRETEXT_H
#define ZANENGINE_SERVER_WIRE_WIRETEXT_H

#include "message/ZANFieldGroup.h"
#include "server/wire/CompiledDictionary.h"

#include <string>
#include <string_view>

namespace zan::server {

/// Appends the text of a message, separated by SOH: version (tag 8, the dictionary's when the model
/// has none), length, type, the other fields of the header by ascending tags, the body as
/// `writeFields` writes it, a signature, and the checksum. Length and checksum are worked out,
/// whatever the model holds under their tags. Throws `MalformedMessage` as `writeFields` does, and
/// when the type (tag 35) is missing; `text` is as it was then.
///
/// With a `text` that is used again and again no memory is taken from the heap.
void appendWireText(std::string& text, ZANFieldGroup const& message,
                    CompiledDictionary const& dictionary);

/// The same as a text of its own.
std::string wireText(ZANFieldGroup const& message, CompiledDictionary const& dictionary);

/// The sum of all bytes, modulo 256.
unsigned checksumOf(std::string_view text);

} // namespace zan::server

#endif
