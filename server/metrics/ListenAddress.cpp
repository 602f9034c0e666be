#include "server/metrics/ListenAddress.h"

#include "infra/WrongConfigurationException.h"

#include <charconv>
#include <optional>
#include <string_view>

#include <arpa/inet.h>

namespace zan::server {

namespace {

constexpr int highestPort = 65535;

std::optional<int> portOf(std::string_view digits) {
    int port = -1;
    auto const [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), port);
    bool const isPort = error == std::errc() && end == digits.data() + digits.size() && port >= 0 &&
                        port <= highestPort;
    return isPort ? std::optional(port) : std::nullopt;
}

bool isAddress(int family, std::string const& host) {
    in6_addr unused{};
    return inet_pton(family, host.c_str(), &unused) == 1;
}

std::optional<std::string> hostOf(std::string const& text) {
    if (text.size() > 2 && text.front() == '[' && text.back() == ']') {
        std::string host = text.substr(1, text.size() - 2);
        return isAddress(AF_INET6, host) ? std::optional(host) : std::nullopt;
    }
    return isAddress(AF_INET, text) ? std::optional(text) : std::nullopt;
}

} // namespace

std::string ListenAddress::toString() const {
    bool const isIPv6 = host.find(':') != std::string::npos;
    return (isIPv6 ? "[" + host + "]" : host) + ":" + std::to_string(port);
}

ListenAddress parseListenAddress(std::string const& property, std::string const& text) {
    std::size_t const colon = text.rfind(':');
    bool const hasHost = colon != std::string::npos;
    std::optional<std::string> const host = hasHost ? hostOf(text.substr(0, colon)) : "127.0.0.1";
    std::optional<int> const port = portOf(hasHost ? text.substr(colon + 1) : text);
    if (!host || !port) {
        throw WrongConfigurationException(
            property + "=" + text + ": is no " + (host ? "port" : "numeric address") +
            "; a port from 0 to 65535, alone or behind an address as in 127.0.0.1:9464 or "
            "[::1]:9464, would be right");
    }
    return {*host, *port};
}

} // namespace zan::server
