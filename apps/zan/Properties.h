/// The effective settings of a connection, as the engine tells them.
///
/// Threads: one at a time.
#ifndef ZANENGINE_APPS_ZAN_PROPERTIES_H
#define ZANENGINE_APPS_ZAN_PROPERTIES_H

#include "apps/zan/Session.h"

#include <string>
#include <utility>
#include <vector>

namespace zan::cli {

/// All of them, in the engine's order.
std::vector<std::pair<std::string, std::string>> propertiesOf(Session const& session,
                                                              std::string const& connection);

/// One of them; empty when there is none.
std::string propertyOf(Session const& session, std::string const& connection,
                       std::string const& key);

} // namespace zan::cli

#endif
