#include "apps/zan/Properties.h"

#include <algorithm>
#include <sstream>

namespace zan::cli {

std::vector<std::pair<std::string, std::string>> propertiesOf(Session const& session,
                                                              std::string const& connection) {
    std::vector<std::pair<std::string, std::string>> properties;
    std::istringstream lines(
        session.engine().getConnectionProperties(session.ticket(), connection));
    for (std::string line; std::getline(lines, line);) {
        std::size_t const equals = std::min(line.find('='), line.size());
        properties.emplace_back(line.substr(0, equals),
                                line.substr(std::min(equals + 1, line.size())));
    }
    return properties;
}

std::string propertyOf(Session const& session, std::string const& connection,
                       std::string const& key) {
    for (auto const& [name, value] : propertiesOf(session, connection)) {
        if (name == key) {
            return value;
        }
    }
    return {};
}

} // namespace zan::cli
