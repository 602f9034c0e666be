/// How the engine reports a failure to an application.
///
/// Threads: any.
#ifndef ZANENGINE_SERVER_ENGINE_ENGINEERRORS_H
#define ZANENGINE_SERVER_ENGINE_ENGINEERRORS_H

#include <string>

namespace zan::server {

/// Throws the exception that the registry of the engine's errors holds for the class `Failure`; its
/// message is the engine's name for the error, a colon, a blank, and `text`.
template <class Failure>
[[noreturn]] void fail(std::string const& text);

/// Throws what is registered for the engine's error name `type`.
[[noreturn]] void failAs(std::string const& type, std::string const& text);

/// The text with blanks in place of line ends and other control characters.
std::string onOneLine(std::string text);

/// One line on standard output for an operator, whatever line ends and control characters `text`
/// holds.
void report(std::string const& connection, std::string const& text);

/// A failure that cannot be told otherwise, because there is no memory: one line as above.
void reportNoMemory() noexcept;

template <class Failure>
void fail(std::string const& text) {
    failAs(Failure().getType(), text);
}

} // namespace zan::server

#endif
