/// Messages, states and tables as people read them, on lines of at most 100 characters.
#ifndef ZANENGINE_EXAMPLES_DEMO_MESSAGELINES_H
#define ZANENGINE_EXAMPLES_DEMO_MESSAGELINES_H

#include "zanengine.h"

#include <map>
#include <string>
#include <vector>

/// A message as the demo looks at it: its main fields by tag.
using MessageFields = std::map<int, std::string>;

MessageFields fieldsOf(ZANFieldGroup const& group);

/// Empty when the field is not there.
std::string valueOf(MessageFields const& fields, int tag);

/// Whether the message goes to the counterparty.
bool isOut(MessageFields const& fields);

/// These end with a line break.
std::string lineOf(ZANMessage const& message);
std::string lineOf(std::string const& connection, ZANConnectionState const& state);
std::string linesOf(std::vector<std::vector<std::string>> const& table);

#endif
