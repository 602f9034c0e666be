// Which failure ends the program with which code, and how it is told.
#include "apps/zan/ExitCodes.h"
#include "errors/ZANCannotConnectException.h"
#include "errors/ZANConnectionUnavailableException.h"
#include "errors/ZANConnectionUnknownException.h"
#include "errors/ZANEngineUnknownRemoteException.h"
#include "errors/ZANInvalidLogonException.h"
#include "errors/ZANInvalidMessageException.h"
#include "errors/ZANNotConnectedException.h"
#include "errors/ZANPersistentStorageException.h"
#include "errors/ZANSecurityException.h"
#include "infra/WrongConfigurationException.h"

#include <gtest/gtest.h>

#include <system_error>

namespace {

using namespace zan::cli;

TEST(ExitCodes, GoWithTheClassOfTheFailure) {
    EXPECT_EQ(exitCodeOf(std::runtime_error("x")), ExitCode::Failure);
    EXPECT_EQ(exitCodeOf(ZANEngineException("x")), ExitCode::Failure);
    EXPECT_EQ(exitCodeOf(UsageError("x")), ExitCode::Usage);
    EXPECT_EQ(exitCodeOf(WrongConfigurationException("x")), ExitCode::Configuration);
    EXPECT_EQ(exitCodeOf(ZANCannotConnectException("x")), ExitCode::CannotConnect);
    EXPECT_EQ(exitCodeOf(ZANInvalidLogonException("x")), ExitCode::CannotConnect);
    EXPECT_EQ(exitCodeOf(ZANNotConnectedException("x")), ExitCode::NotConnected);
    EXPECT_EQ(exitCodeOf(ZANConnectionUnknownException("x")), ExitCode::UnknownConnection);
    EXPECT_EQ(exitCodeOf(ZANConnectionUnavailableException("x")), ExitCode::Unavailable);
    EXPECT_EQ(exitCodeOf(ZANInvalidMessageException("x")), ExitCode::InvalidMessage);
    EXPECT_EQ(exitCodeOf(ZANPersistentStorageException("x")), ExitCode::Storage);
    EXPECT_EQ(exitCodeOf(std::system_error(ENOENT, std::generic_category())), ExitCode::Storage);
    EXPECT_EQ(exitCodeOf(ZANSecurityException("x")), ExitCode::Security);
    EXPECT_EQ(exitCodeOf(Interruption()), ExitCode::Interrupted);
    EXPECT_EQ(exitCodeOf(OutputIsClosed()), ExitCode::OutputClosed);
}

TEST(ExitCodes, FailuresAreToldWithoutTheEnginesNameForThem) {
    ZANNotConnectedException const failure(ZANNotConnectedException().getType() +
                                           ": connection C is not logged on");
    EXPECT_EQ(lineOf(failure), "connection C is not logged on");
    EXPECT_EQ(lineOf(ZANEngineUnknownRemoteException("other.Exception: text")),
              "other.Exception: text");
}

TEST(ExitCodes, FailuresAreToldInOneLine) {
    EXPECT_EQ(lineOf(WrongConfigurationException("No module:\n  a: none\n  b: none")),
              "No module: a: none; b: none");
    EXPECT_EQ(lineOf(WrongConfigurationException("one\ntwo\n")), "one; two");
}

} // namespace
