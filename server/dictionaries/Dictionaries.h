/// The data dictionaries that are built into the engine.
#ifndef ZANENGINE_SERVER_DICTIONARIES_DICTIONARIES_H
#define ZANENGINE_SERVER_DICTIONARIES_DICTIONARIES_H

#include <string_view>

namespace zan::server {

/// The XML text of the dictionary that serves a protocol version: that of FIX 4.2 for it and what
/// is older, that of FIX 4.4 for everything else. Lives as long as the program.
std::string_view dictionaryFor(std::string_view beginString);

/// The XML text of the dictionary of FIXT.1.1: the header, the trailer and the administrative
/// messages for application messages of any version. Lives as long as the program.
std::string_view transportDictionary();

/// What values of fields stand for, one a line: the tag, the value, the name, with a blank between
/// them. Lives as long as the program.
std::string_view valueNames();

} // namespace zan::server

#endif
