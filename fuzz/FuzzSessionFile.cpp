// Any bytes as a session file: they are connections, or they are refused in clear words.
#include "Demand.h"
#include "infra/WrongConfigurationException.h"
#include "server/config/SessionFile.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace {

using namespace zan::server;
using Connections = std::vector<ConnectionSettings>;

std::optional<Connections> parse(std::string_view text) {
    try {
        return parseSessionText(text, "fuzzed.cfg");
    } catch (WrongConfigurationException const& refusal) {
        demand(std::string_view(refusal.getMessage()).find("fuzzed.cfg") != std::string_view::npos,
               "a refusal names the file");
        return std::nullopt;
    }
}

std::string print(Connections const& connections) {
    std::string text;
    for (ConnectionSettings const& connection : connections) {
        text += "[SESSION]\n";
        for (auto const& [key, value] : connection.keys) {
            text += key + "=" + value + "\n";
        }
    }
    return text;
}

bool isSame(Connections const& left, Connections const& right) {
    bool same = left.size() == right.size();
    for (std::size_t i = 0; same && i < left.size(); ++i) {
        same = left[i].name == right[i].name && left[i].sessionId == right[i].sessionId &&
               left[i].logonTimeout == right[i].logonTimeout && left[i].keys == right[i].keys;
    }
    return same;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    auto const connections = parse({reinterpret_cast<char const*>(data), size});
    if (!connections) {
        return 0;
    }
    demand(!connections->empty(), "a file that is taken has a session");
    std::set<std::string> names;
    for (ConnectionSettings const& connection : *connections) {
        demand(!connection.name.empty(), "a connection has a name");
        demand(names.insert(connection.name).second, "a name stands for one connection");
    }
    auto const again = parse(print(*connections));
    demand(again && isSame(*again, *connections), "parse of print is the identity");
    return 0;
}
