/// The messages that a command is to send: arguments, or the lines of a file or of standard input.
///
/// Threads: one at a time.
#ifndef ZANENGINE_APPS_ZAN_MESSAGEINPUT_H
#define ZANENGINE_APPS_ZAN_MESSAGEINPUT_H

#include "apps/zan/InputLines.h"
#include "apps/zan/Interrupt.h"
#include "apps/zan/Names.h"
#include "infra/counted_ptr.h"
#include "message/ZANMessage.h"

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace zan::cli {

class MessageInput {
public:
    /// The given messages; without any, those of the file (`-`: standard input).
    MessageInput(std::vector<std::string> messages, std::string const& file,
                 Interrupt const& interrupt);

    /// The next message; false when there is none. Empty lines and those that begin with `#` are
    /// passed over.
    bool next(std::string& message);

    /// Where the message that was given out last stands: `message 2` or `sessions.txt, line 7`.
    std::string place() const;

private:
    std::vector<std::string> const messages_;
    std::string const file_;
    std::unique_ptr<InputLines> lines_;
    std::size_t given_ = 0;
};

/// The model of a message, separated by SOH or by `|`. Throws `server::MalformedMessage`.
counted_ptr<ZANMessage> modelOf(std::string const& message, Dictionary const& dictionary);

} // namespace zan::cli

#endif
