/// How a command prints entries of the log, as its options say.
///
/// Threads: one at a time.
#ifndef ZANENGINE_APPS_ZAN_SHOWNMESSAGES_H
#define ZANENGINE_APPS_ZAN_SHOWNMESSAGES_H

#include "apps/zan/Command.h"
#include "apps/zan/MessageRow.h"

#include <string>
#include <vector>

namespace zan::cli {

class ShownMessages {
public:
    /// Adds the options; this object must live as long as the command.
    void addTo(Options& options);

    /// To be called before anything is done or printed; throws `UsageError` for columns that nobody
    /// knows. The names are those of the connection's dictionary.
    void begin(Session const& session, std::string const& connection, Context& context);

    /// Passwords are masked unless the settings say otherwise.
    void print(MessageRow const& row, Context& context) const;

private:
    static void printDecoded(MessageRow const& row, Context& context);

    std::string list_;
    bool isDecoded_ = false;
    std::vector<std::string> columns_;
};

} // namespace zan::cli

#endif
