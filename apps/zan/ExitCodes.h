/// How the program ends: one table for the help, the manual page, the program itself and its tests.
///
/// Threads: constants and functions without shared state.
#ifndef ZANENGINE_APPS_ZAN_EXITCODES_H
#define ZANENGINE_APPS_ZAN_EXITCODES_H

#include <exception>
#include <span>
#include <stdexcept>
#include <string>

namespace zan::cli {

enum class ExitCode : int {
    Ok = 0,
    Failure = 1,
    Usage = 2,
    Configuration = 3,
    CannotConnect = 4,
    NotConnected = 5,
    UnknownConnection = 6,
    Unavailable = 7,
    InvalidMessage = 8,
    Storage = 9,
    Security = 10,
    CheckFailed = 11,
    Interrupted = 130,
    OutputClosed = 141
};

struct ExitMeaning {
    ExitCode code;
    char const* meaning;
};

/// Every code, in rising order.
std::span<ExitMeaning const> exitMeanings();

/// The code that goes with a failure.
ExitCode exitCodeOf(std::exception const& failure);

/// The failure in one line, without the engine's name for its class.
std::string lineOf(std::exception const& failure);

/// The command line asks for something that cannot be; the text tells what would be right.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Ctrl-C, or a request to end.
class Interruption : public std::exception {
public:
    char const* what() const noexcept override { return "interrupted"; }
};

/// Nobody reads the standard output any more.
class OutputIsClosed : public std::exception {
public:
    char const* what() const noexcept override { return "the output was closed"; }
};

} // namespace zan::cli

#endif
