/// From the text of a message to its model.
///
/// Threads: functions without shared state; a dictionary may be read from several threads.
#ifndef ZANENGINE_SERVER_WIRE_GROUPREADER_H
#define ZANENGINE_SERVER_WIRE_GROUPREADER_H

#include "infra/counted_ptr.h"
#include "message/ZANFieldGroup.h"
#include "server/wire/CompiledDictionary.h"
#include "server/wire/FieldText.h"

#include <string_view>

namespace zan::server {

/// The model of a text: fields as strings, repeating groups as nested groups by the dictionary. The
/// time it takes grows with the length of the text only, whatever the text is.
///
/// Strict: throws `MalformedMessage` for anything that is no field, for a missing type (tag 35), a
/// tag that stands twice where no group explains it, and a count that its instances do not bear
/// out. Tolerant: every text has a model; of a tag that stands twice it shows the last value, and a
/// count without instances stays a field.
counted_ptr<ZANFieldGroup> readMessage(std::string_view text, char separator, Reading reading,
                                       CompiledDictionary const& dictionary);

} // namespace zan::server

#endif
