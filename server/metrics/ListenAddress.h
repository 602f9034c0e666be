/// Where the metrics are served, as an operator writes it.
#ifndef ZANENGINE_SERVER_METRICS_LISTENADDRESS_H
#define ZANENGINE_SERVER_METRICS_LISTENADDRESS_H

#include <string>

namespace zan::server {

struct ListenAddress {
    std::string host;
    int port = 0;

    /// `host:port`, with brackets around an IPv6 address.
    std::string toString() const;
};

/// Reads `<port>`, which is a port of this machine's loopback, `<address>:<port>`, or
/// `[<IPv6 address>]:<port>`; port 0 is one that the system picks. Throws
/// `WrongConfigurationException` that names `property`.
ListenAddress parseListenAddress(std::string const& property, std::string const& text);

} // namespace zan::server

#endif
