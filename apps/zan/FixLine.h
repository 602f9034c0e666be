/// FIX messages as they stand in logs, mails and captures, and whether their frame is sound.
///
/// Threads: functions without shared state.
#ifndef ZANENGINE_APPS_ZAN_FIXLINE_H
#define ZANENGINE_APPS_ZAN_FIXLINE_H

#include <string>
#include <string_view>
#include <vector>

namespace zan::cli {

/// The message in a line, separated by SOH; empty when there is none. In the line it may be
/// separated by SOH, `|` or `^A`, and something may stand before and behind it. Fields alone,
/// without a beginning (tag 8), are a message too.
std::string messageIn(std::string_view line);

/// What is wrong with version, length and checksum of a message, separated by SOH; one text each,
/// which tells what would be right. Empty for a message that is sound, and for fields alone.
std::vector<std::string> frameFaults(std::string const& message);

/// Whether the message has a frame: it begins with tag 8.
bool hasFrame(std::string_view message);

} // namespace zan::cli

#endif
