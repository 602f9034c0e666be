#include "World.h"

#include "RecordingObjects.h"

#include <map>
#include <sstream>

namespace {

using reference::Field;
using reference::Group;

class Comparison {
public:
    std::string of(ZANFieldGroup const& real, Group const& expected) {
        if (auto const [known, isNew] = groups_.try_emplace(&real, &expected); !isNew) {
            return known->second == &expected ? "" : "another group";
        }
        if (real.getGroupTag() != expected.tag) {
            return "group tag " + std::to_string(real.getGroupTag());
        }
        if ((dynamic_cast<RecordingGroup const*>(&real) != nullptr) != (expected.id != 0)) {
            return "another class of group";
        }
        if (real.isFieldsEmpty() != expected.fields.empty() ||
            real.isGroupsEmpty() != expected.groups.empty() ||
            real.empty() != (expected.fields.empty() && expected.groups.empty())) {
            return "emptiness";
        }
        auto const fault = ofFields(real, expected);
        return fault.empty() ? ofGroups(real, expected) : fault;
    }

    std::string of(ZANField const* real, Field const* expected) {
        if (!real || !expected) {
            return !real && !expected ? "" : "an empty place";
        }
        if (auto const [known, isNew] = fields_.try_emplace(real, expected); !isNew) {
            return known->second == expected ? "" : "another field";
        }
        bool const isSame =
            real->getTag() == expected->tag && real->getType() == expected->type &&
            real->getValue() == expected->value &&
            (dynamic_cast<RecordingField const*>(real) != nullptr) == (expected->id != 0);
        std::ostringstream text;
        text << *real << " instead of " << expected->tag << " " << expected->type << " "
             << expected->value << " id " << expected->id;
        return isSame ? "" : text.str();
    }

private:
    std::string ofFields(ZANFieldGroup const& real, Group const& expected) {
        auto const fields = real.fieldIterator();
        for (auto const& [tag, field] : expected.fields) {
            if (!fields->hasNext()) {
                return "no field for " + std::to_string(tag);
            }
            auto const fault = of(fields->current().get(), field.get());
            if (!fault.empty() || real.getField(tag) != fields->current() ||
                real.isFieldPresent(tag) != (field != nullptr)) {
                return "field " + std::to_string(tag) + ": " + fault;
            }
            fields->next();
        }
        return fields->hasNext() ? "too many fields" : "";
    }

    std::string ofGroups(ZANFieldGroup const& real, Group const& expected) {
        auto const all = real.groupIterator();
        for (auto const& [tag, instances] : expected.groups) {
            if (real.getGroupCount(tag) != static_cast<int>(instances.size())) {
                return "count of " + std::to_string(tag);
            }
            auto const each = real.groupIterator(tag);
            for (std::size_t i = 0; i < instances.size(); ++i, each->next()) {
                auto const instance = real.getGroup(tag, static_cast<int>(i));
                if ((instance != nullptr) != (instances[i] != nullptr) ||
                    each->current() != instance) {
                    return "instance of " + std::to_string(tag);
                }
                if (!instance) {
                    continue;
                }
                if (!all->hasNext() || all->current() != instance) {
                    return "order of all instances";
                }
                all->next();
                if (auto const fault = of(*instance, *instances[i]); !fault.empty()) {
                    return std::to_string(tag) + "/" + std::to_string(i) + ": " + fault;
                }
            }
        }
        return all->hasNext() ? "too many instances" : "";
    }

    std::map<ZANFieldGroup const*, Group const*> groups_;
    std::map<ZANField const*, Field const*> fields_;
};

} // namespace

std::string difference(RealSide const& real, ReferenceSide const& expected) {
    Comparison comparison;
    for (std::size_t i = 0; i < expected.groups.size(); ++i) {
        auto const fault = comparison.of(*real.groups[i], *expected.groups[i]);
        if (!fault.empty()) {
            return "group " + std::to_string(i) + ": " + fault;
        }
    }
    for (std::size_t i = 0; i < expected.fields.size(); ++i) {
        auto const fault = comparison.of(real.fields[i].get(), expected.fields[i].get());
        if (!fault.empty()) {
            return "held field " + std::to_string(i) + ": " + fault;
        }
    }
    return "";
}

Value Chance::value() {
    Value value;
    switch (below(6)) {
    case 0:
        value.setLong(below(1000));
        break;
    case 1:
        value.setDouble(below(1000) / 8.0);
        break;
    case 2:
        value.setBool(oneIn(2));
        break;
    case 3:
        value.setChar(static_cast<char>('a' + below(26)));
        break;
    default:
        value.setString(std::string(static_cast<std::size_t>(below(60)), 'x'));
    }
    return value;
}
