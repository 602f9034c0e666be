/// Lines of text from a file or from the standard input, until Ctrl-C.
///
/// Threads: one at a time.
#ifndef ZANENGINE_APPS_ZAN_INPUTLINES_H
#define ZANENGINE_APPS_ZAN_INPUTLINES_H

#include "apps/zan/Interrupt.h"

#include <cstddef>
#include <string>

namespace zan::cli {

class InputLines {
public:
    /// Reads from a file, `-` for the standard input. Throws std::system_error when it cannot.
    InputLines(std::string const& file, Interrupt const& interrupt);
    ~InputLines();
    InputLines(InputLines const&) = delete;
    InputLines& operator=(InputLines const&) = delete;

    /// The next line, without its end; false when there is none. Throws `Interruption` while it
    /// waits, and std::system_error.
    bool next(std::string& line);

    /// The number of the line that was read last, from 1.
    int number() const { return number_; }

private:
    bool fill();

    std::string const file_;
    Interrupt const& interrupt_;
    int descriptor_;
    // What was read; what stands before `at_` was given out.
    std::string waiting_;
    std::size_t at_ = 0;
    bool isAtEnd_ = false;
    int number_ = 0;
};

} // namespace zan::cli

#endif
