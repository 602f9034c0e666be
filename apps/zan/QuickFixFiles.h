/// The files in which QuickFIX keeps a session: those of its file store, and its message log.
///
/// Threads: one at a time.
#ifndef ZANENGINE_APPS_ZAN_QUICKFIXFILES_H
#define ZANENGINE_APPS_ZAN_QUICKFIXFILES_H

#include "apps/zan/Interrupt.h"

#include <functional>
#include <map>
#include <string>

namespace zan::cli {

/// What a file store holds.
struct FileStore {
    int nextOut = 1;
    int nextIn = 1;
    /// When the numbering began, in milliseconds since 1970-01-01 00:00:00 UTC.
    long long began = 0;
    /// The messages that were sent under these numbers.
    std::map<int, std::string> sent;
};

/// Reads `<prefix>.seqnums`, `.session`, `.header` and `.body`. Throws
/// `WrongConfigurationException` with the file and what would be right.
FileStore readFileStore(std::string const& prefix);

/// A message of a log, with the time at which it was written.
struct LoggedMessage {
    long long millis = 0;
    std::string text;
};

/// Gives out the messages of a file such as `<prefix>.messages.current.log`, in their order. Throws
/// `WrongConfigurationException` for a file that is no such log, and `Interruption`.
void readMessageLog(std::string const& file, Interrupt const& interrupt,
                    std::function<void(LoggedMessage const&)> const& sink);

/// A time as QuickFIX writes it, `20261121-09:30:00` with or without a fraction of any length; -1
/// for another text.
long long millisOf(std::string const& time);

} // namespace zan::cli

#endif
