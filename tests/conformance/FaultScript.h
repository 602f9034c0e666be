/// `FaultScript`: what goes wrong, and when. One fault a line; empty lines and lines that begin
/// with
/// `#` are passed over:
///
///     throw sendMessage 3 ZANNotConnectedException the line is down
///     delay sendMessage * 50ms
///     drop sendMessage 4
///     reorder sendMessage 5 6
///     delay event * 20ms
///     drop event 5
///     reorder event 2 3
///
/// A call is named by its operation, overloads alike, and its number, from 1; `*` is every one. A
/// call that is dropped does not reach the engine and answers nothing: zero, false, an empty text.
/// A call that is reordered waits until the other one is done, a second at most. An event that is
/// reordered comes right after the other one; `event` is a message event, numbered for each
/// connection and each listener. The classes to throw are those of the library.
#ifndef ZANENGINE_CONFORMANCE_FAULTSCRIPT_H
#define ZANENGINE_CONFORMANCE_FAULTSCRIPT_H

#include <chrono>
#include <string>
#include <vector>

namespace zan::conformance {

struct Fault {
    enum class Kind { Throw, Delay, Drop, Reorder };
    Kind kind = Kind::Drop;
    /// The operation, or `event`.
    std::string what;
    /// 0 for every one.
    int number = 0;
    /// Of a reordering: the number that comes before.
    int after = 0;
    std::chrono::milliseconds time{0};
    std::string exception;
    std::string text;
};

/// A list of faults that never changes. Threads: any.
class FaultScript {
public:
    /// No faults.
    FaultScript() = default;

    /// Throws `WrongConfigurationException` with the line and what would be right; `name` stands
    /// before the line's number.
    FaultScript(std::string const& text, std::string const& name);

    /// Reads a file. Throws also when it cannot be read.
    static FaultScript read(std::string const& path);

    /// The faults of this call or event, in the order of the lines.
    std::vector<Fault> of(std::string const& what, int number) const;

private:
    std::vector<Fault> faults_;
};

/// Throws an exception of that class of the library, as an engine's error is thrown: the message of
/// a remote one begins with the engine's name for it. Throws `WrongConfigurationException` for a
/// class that the library does not have.
[[noreturn]] void throwByName(std::string const& exception, std::string const& text);

} // namespace zan::conformance

#endif
