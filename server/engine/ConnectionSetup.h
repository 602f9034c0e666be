/// From the settings of a connection to what its session needs, and to what applications may see.
///
/// Threads: functions without shared state.
#ifndef ZANENGINE_SERVER_ENGINE_CONNECTIONSETUP_H
#define ZANENGINE_SERVER_ENGINE_CONNECTIONSETUP_H

#include "server/config/SessionFile.h"
#include "server/log/MessageLog.h"
#include "server/sessions/FixSession.h"
#include "server/sessions/SessionHours.h"
#include "server/wire/CompiledDictionary.h"
#include "server/wire/MessageRules.h"

#include <memory>
#include <string>

namespace zan::server {

/// What is known of the connection's messages: by its own DataDictionary, or by the one that is
/// built in for its version; with FIXT.1.1 together with its TransportDataDictionary. Connections
/// whose dictionaries are the same share one. Throws `WrongConfigurationException`.
std::shared_ptr<CompiledDictionary const> loadDictionary(ConnectionSettings const& settings);

/// The file of the connection's message log in this folder, and how durable it has to be.
LogSettings logSettings(ConnectionSettings const& settings, std::string const& dataFolder);

/// When the session is open. Throws `WrongConfigurationException`.
SessionHours hoursOf(ConnectionSettings const& settings);

/// `host:port` of the counterparty.
std::string addressOf(ConnectionSettings const& settings);

/// What the connection's messages have to keep to.
ValidationSettings validationSettings(ConnectionSettings const& settings);

FixSessionSettings sessionSettings(ConnectionSettings const& settings, FixSessionStore& store,
                                   MessageCheck const& check);

/// One `key=value` a line: the effective settings, then the fields that are added to the Logon.
/// The values of secrets are shown as `***`.
std::string propertiesText(ConnectionSettings const& settings, std::string const& logFile,
                           FixFields const& logonFields);

} // namespace zan::server

#endif
