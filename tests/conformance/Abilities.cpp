#include "conformance/Abilities.h"

#include "conformance/FixText.h"

#include <algorithm>
#include <map>
#include <stdexcept>

namespace zan::conformance {

namespace {

std::map<Ability, std::string> const& names() {
    static std::map<Ability, std::string> const names = {
        {Ability::Connections, "connections"}, {Ability::Sending, "sending"},
        {Ability::Events, "events"},           {Ability::Admin, "admin"},
        {Ability::Batches, "batches"},         {Ability::Posting, "posting"},
        {Ability::Direct, "direct"},           {Ability::States, "states"},
        {Ability::Sessions, "sessions"},       {Ability::Log, "log"},
        {Ability::Expressions, "expressions"}, {Ability::Edits, "edits"},
        {Ability::Resending, "resending"},     {Ability::Guaranteed, "guaranteed"},
        {Ability::Persistence, "persistence"}, {Ability::StopInListener, "stop-in-listener"},
        {Ability::Properties, "properties"},   {Ability::Clock, "clock"}};
    return names;
}

Ability abilityOf(std::string const& name) {
    auto const found =
        std::ranges::find_if(names(), [&](auto const& known) { return known.second == name; });
    if (found != names().end()) {
        return found->first;
    }
    std::string known = "all, none";
    for (auto const& [ability, each] : names()) {
        known += ", " + each;
    }
    throw std::invalid_argument("\"" + name + "\" is no ability; these are: " + known);
}

unsigned bitOf(Ability ability) {
    return 1U << static_cast<unsigned>(ability);
}

} // namespace

std::vector<Ability> const& everyAbility() {
    static std::vector<Ability> const every = [] {
        std::vector<Ability> found;
        for (auto const& [ability, name] : names()) {
            found.push_back(ability);
        }
        return found;
    }();
    return every;
}

std::string const& nameOf(Ability ability) {
    return names().at(ability);
}

Abilities::Abilities(std::initializer_list<Ability> abilities) {
    for (Ability const each : abilities) {
        add(each);
    }
}

Abilities Abilities::all() {
    Abilities abilities;
    for (Ability const each : everyAbility()) {
        abilities.add(each);
    }
    return abilities;
}

Abilities Abilities::parse(std::string const& text) {
    Abilities abilities;
    for (std::string const& each : splitFields(text, ',')) {
        if (each == "all") {
            abilities = all();
        } else if (each == "none") {
            abilities = Abilities();
        } else if (each.starts_with('-')) {
            abilities.remove(abilityOf(each.substr(1)));
        } else {
            abilities.add(abilityOf(each));
        }
    }
    return abilities;
}

bool Abilities::has(Ability ability) const {
    return (bits_ & bitOf(ability)) != 0;
}

void Abilities::add(Ability ability) {
    bits_ |= bitOf(ability);
}

void Abilities::remove(Ability ability) {
    bits_ &= ~bitOf(ability);
}

} // namespace zan::conformance
