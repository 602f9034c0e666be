/// Whether somebody listens at an address.
#ifndef ZANENGINE_APPS_ZAN_TCPPROBE_H
#define ZANENGINE_APPS_ZAN_TCPPROBE_H

#include <string>

namespace zan::cli {

/// Opens a link and closes it again, waiting three seconds at most. Empty when that works, else
/// the reason.
std::string tcpProblem(std::string const& host, std::string const& port);

} // namespace zan::cli

#endif
