/// The dictionary that a connection itself works with.
///
/// Threads: one at a time.
#ifndef ZANENGINE_APPS_ZAN_CONNECTIONDICTIONARY_H
#define ZANENGINE_APPS_ZAN_CONNECTIONDICTIONARY_H

#include "apps/zan/Names.h"
#include "apps/zan/Session.h"

#include <string>

namespace zan::cli {

/// Lets the names be those of the file that the engine names for this connection, if it names one
/// that can be read here and the command line gives no other. Throws `WrongConfigurationException`
/// for a file that is no dictionary.
void useDictionaryOf(Session const& session, std::string const& connection, Names& names);

} // namespace zan::cli

#endif
