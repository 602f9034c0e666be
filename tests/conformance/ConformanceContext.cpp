#include "conformance/ConformanceContext.h"

#include "engine/ZANEngineProxy.h"
#include "infra/Url.h"

#include <utility>
#include <vector>

namespace zan::conformance {

ConformanceContext::~ConformanceContext() = default;

std::string ConformanceContext::connection() const {
    if (!abilities().has(Ability::Connections)) {
        return "NONE";
    }
    std::vector<std::string> names;
    ZANEngineProxy::getInstance().getConnectionNameList(UserTicket("conformance", ""), names);
    return names.at(0);
}

std::string ConformanceContext::order(std::string const& id) const {
    return "35=D|11=" + id + "|55=IBM|54=1|38=100|40=2|44=95.5|60=20261121-09:30:00";
}

ScriptedCounterparty* ConformanceContext::counterparty() {
    return nullptr;
}

std::chrono::milliseconds ConformanceContext::patience() const {
    return std::chrono::seconds(30);
}

UrlContext::UrlContext(std::string url, Abilities abilities, std::string connection)
    : url_(std::move(url)), abilities_(abilities), connection_(std::move(connection)) {}

Abilities UrlContext::abilities() const {
    return abilities_;
}

void UrlContext::start() {
    ZANEngineProxy::initialize(Url(url_));
}

std::string UrlContext::connection() const {
    return connection_.empty() ? ConformanceContext::connection() : connection_;
}

} // namespace zan::conformance
