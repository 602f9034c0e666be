#include "apps/zan/ExitCodes.h"

#include "errors/ZANCannotConnectException.h"
#include "errors/ZANConnectionUnavailableException.h"
#include "errors/ZANConnectionUnknownException.h"
#include "errors/ZANInvalidConfigPropertiesException.h"
#include "errors/ZANInvalidLogonException.h"
#include "errors/ZANInvalidMessageException.h"
#include "errors/ZANNotConnectedException.h"
#include "errors/ZANPersistentStorageException.h"
#include "errors/ZANSecurityException.h"
#include "infra/WrongConfigurationException.h"
#include "server/log/MessageLog.h"
#include "server/wire/FieldText.h"

#include <algorithm>
#include <system_error>

namespace zan::cli {

namespace {

constexpr ExitMeaning meanings[] = {
    {ExitCode::Ok, "all was done"},
    {ExitCode::Failure, "another failure; the line on standard error tells which"},
    {ExitCode::Usage, "wrong arguments, or a question that nobody could answer"},
    {ExitCode::Configuration, "URL, adapter module, session file, data folder or config file"},
    {ExitCode::CannotConnect, "the link could not be opened, or the logon was refused"},
    {ExitCode::NotConnected, "the connection is not logged on"},
    {ExitCode::UnknownConnection, "the engine has no connection of that name"},
    {ExitCode::Unavailable, "the engine cannot serve the connection now"},
    {ExitCode::InvalidMessage, "a message, an expression or an argument for the engine is wrong"},
    {ExitCode::Storage, "a log or another file could not be read or written"},
    {ExitCode::Security, "the ticket (user and secret) does not allow it"},
    {ExitCode::CheckFailed, "a check found a fault: ping, decode, doctor, modules"},
    {ExitCode::Interrupted, "ended by Ctrl-C or SIGTERM, in order"},
    {ExitCode::OutputClosed, "the reader of the output went away"},
};

template <class... Failures>
bool isOne(std::exception const& failure) {
    return (dynamic_cast<Failures const*>(&failure) || ...);
}

} // namespace

std::span<ExitMeaning const> exitMeanings() {
    return meanings;
}

ExitCode exitCodeOf(std::exception const& failure) {
    if (isOne<Interruption>(failure)) {
        return ExitCode::Interrupted;
    }
    if (isOne<OutputIsClosed>(failure)) {
        return ExitCode::OutputClosed;
    }
    if (isOne<UsageError>(failure)) {
        return ExitCode::Usage;
    }
    if (isOne<WrongConfigurationException, ZANInvalidConfigPropertiesException>(failure)) {
        return ExitCode::Configuration;
    }
    if (isOne<ZANCannotConnectException, ZANInvalidLogonException>(failure)) {
        return ExitCode::CannotConnect;
    }
    if (isOne<ZANNotConnectedException>(failure)) {
        return ExitCode::NotConnected;
    }
    if (isOne<ZANConnectionUnknownException>(failure)) {
        return ExitCode::UnknownConnection;
    }
    if (isOne<ZANConnectionUnavailableException>(failure)) {
        return ExitCode::Unavailable;
    }
    if (isOne<ZANInvalidMessageException, server::MalformedMessage>(failure)) {
        return ExitCode::InvalidMessage;
    }
    if (isOne<ZANPersistentStorageException, server::LogFailure, std::system_error>(failure)) {
        return ExitCode::Storage;
    }
    return isOne<ZANSecurityException>(failure) ? ExitCode::Security : ExitCode::Failure;
}

std::string lineOf(std::exception const& failure) {
    std::string text = failure.what();
    if (auto const* const remote = dynamic_cast<ZANEngineRemoteException const*>(&failure)) {
        std::string const prefix = remote->getType() + ": ";
        if (text.starts_with(prefix)) {
            text.erase(0, prefix.size());
        }
    }
    // The engine's list of places, say, one a line.
    text.resize(text.find_last_not_of('\n') + 1);
    for (std::size_t at = text.find('\n'); at != std::string::npos; at = text.find('\n', at)) {
        std::size_t const end = std::min(text.find_first_not_of("\n ", at), text.size());
        bool const isListed = at > 0 && text[at - 1] == ':';
        text.replace(at, end - at, isListed ? " " : "; ");
    }
    return text;
}

} // namespace zan::cli
