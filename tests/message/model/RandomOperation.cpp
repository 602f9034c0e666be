#include "RecordingObjects.h"
#include "World.h"

#include <array>

namespace {

using reference::Group;
using reference::Model;

constexpr std::size_t mostHandles = 12;
constexpr int largestGroup = 1500;

int nextId() {
    static int last = 0;
    return ++last;
}

/// How many fields and groups there are, as far as `limit`.
int sizeOf(Group const& group, int limit) {
    int size = 1 + static_cast<int>(group.fields.size());
    for (auto const& [tag, instances] : group.groups) {
        for (auto const& instance : instances) {
            size += instance && size < limit ? sizeOf(*instance, limit - size) : 0;
        }
    }
    return size;
}

std::string nothing() {
    return {};
}

class Chooser {
public:
    Chooser(Chance& chance, RealSide& real, ReferenceSide& expected)
        : chance_(chance), real_(real), expected_(expected) {}

    Operation choose() {
        makeSomething();
        Operation operation;
        operation.handle = handle();
        Group* group = expected_.groups[operation.handle].get();
        while (!group->groups.empty() && chance_.oneIn(2)) {
            auto const& [tag, instances] = *std::next(
                group->groups.begin(), chance_.below(static_cast<int>(group->groups.size())));
            int const index = chance_.below(static_cast<int>(instances.size()));
            if (!instances[static_cast<std::size_t>(index)]) {
                break;
            }
            operation.path.emplace_back(tag, index);
            group = instances[static_cast<std::size_t>(index)].get();
        }
        static constexpr std::array choices{
            &Chooser::set,        &Chooser::set,          &Chooser::set,
            &Chooser::addField,   &Chooser::addField,     &Chooser::removeField,
            &Chooser::addGroup,   &Chooser::addGroup,     &Chooser::removeInstance,
            &Chooser::removeAll,  &Chooser::clear,        &Chooser::assign,
            &Chooser::assign,     &Chooser::handOutField, &Chooser::changeHeldField,
            &Chooser::handOut,    &Chooser::copyGroup,    &Chooser::replaceByIterator,
            &Chooser::emptyPlace, &Chooser::setMany,      &Chooser::read,
            &Chooser::setText,    &Chooser::setGroupTag};
        auto const chosen =
            choices[static_cast<std::size_t>(chance_.below(static_cast<int>(choices.size())))];
        (this->*chosen)(operation, *group);
        return operation;
    }

private:
    std::size_t handle() {
        return static_cast<std::size_t>(chance_.below(static_cast<int>(expected_.groups.size())));
    }

    void makeSomething() {
        if (expected_.groups.size() > mostHandles) {
            drop(real_.groups, expected_.groups);
        }
        if (expected_.fields.size() > mostHandles) {
            drop(real_.fields, expected_.fields);
        }
        if (expected_.groups.size() < 3 || chance_.oneIn(4)) {
            makeGroup();
        }
        if (expected_.fields.size() < 3 || chance_.oneIn(3)) {
            makeField();
        }
    }

    template <class Reals, class Expecteds>
    void drop(Reals& reals, Expecteds& expecteds) {
        int const index = chance_.below(static_cast<int>(expecteds.size()));
        reals.erase(reals.begin() + index);
        expecteds.erase(expecteds.begin() + index);
    }

    void makeGroup() {
        int const tag = chance_.below(4);
        int const id = chance_.oneIn(2) ? nextId() : 0;
        real_.groups.emplace_back(id != 0 ? new RecordingGroup(id, tag) : new ZANFieldGroup(tag));
        expected_.groups.push_back(std::make_shared<Group>());
        expected_.groups.back()->tag = tag;
        expected_.groups.back()->id = id;
    }

    void makeField() {
        int const tag = chance_.tag();
        int const id = chance_.oneIn(2) ? nextId() : 0;
        Value const value = chance_.value();
        real_.fields.emplace_back(id != 0 ? new RecordingField(id, tag, value)
                                          : new ZANField(tag, value.getType(), value));
        expected_.fields.push_back(
            std::make_shared<reference::Field>(reference::Field{tag, value.getType(), value, id}));
    }

    void set(Operation& operation, Group const&) {
        int const tag = chance_.tag();
        Value const value = chance_.value();
        int const how = chance_.oneIn(3) ? 0 : value.getType();
        bool const asInt = chance_.oneIn(2);
        operation.name = "set " + std::to_string(tag);
        operation.onReal = [=](ZANFieldGroup& group, RealSide&) {
            switch (how) {
            case Value::LONG:
                asInt ? group.setFieldValue(tag, value.asInt())
                      : group.setFieldValue(tag, value.asLong());
                break;
            case Value::DOUBLE:
                group.setFieldValue(tag, value.asDouble());
                break;
            case Value::BOOL:
                group.setFieldValue(tag, value.asBool());
                break;
            case Value::CHAR:
                group.setFieldValue(tag, value.asChar());
                break;
            case Value::STRING:
                group.setFieldValue(tag, value.asString());
                break;
            default:
                group.setFieldValue(tag, value);
            }
            return nothing();
        };
        operation.onReference = [=](Model& model, Group& group, ReferenceSide&) {
            static std::map<int, std::string> const kinds{{Value::DOUBLE, "setDouble"},
                                                          {Value::BOOL, "setBool"},
                                                          {Value::CHAR, "setChar"},
                                                          {Value::STRING, "setString"}};
            if (how == Value::LONG) {
                model.setTyped(group, tag, value, asInt ? "setInt" : "setLong");
            } else if (how != 0) {
                model.setTyped(group, tag, value, kinds.at(how));
            } else {
                model.setAny(group, tag, value);
            }
            return nothing();
        };
    }

    void setText(Operation& operation, Group const&) {
        bool const isType = chance_.oneIn(2);
        std::string const text(static_cast<std::size_t>(chance_.below(40)), 't');
        operation.name = "set type or version";
        operation.onReal = [=](ZANFieldGroup& group, RealSide&) {
            isType ? group.setMsgType(text) : group.setProtocolVersion(text);
            return nothing();
        };
        operation.onReference = [=](Model& model, Group& group, ReferenceSide&) {
            model.setText(group, isType ? 35 : 8, text,
                          isType ? "setMsgType" : "setProtocolVersion");
            return nothing();
        };
    }

    void setGroupTag(Operation& operation, Group const&) {
        int const tag = chance_.below(4);
        operation.name = "set group tag";
        operation.onReal = [=](ZANFieldGroup& group, RealSide&) {
            group.setGroupTag(tag);
            return nothing();
        };
        operation.onReference = [=](Model& model, Group& group, ReferenceSide&) {
            model.setGroupTag(group, tag);
            return nothing();
        };
    }

    void setMany(Operation& operation, Group const& target) {
        int const first = chance_.below(3000) - 1500;
        int const count = sizeOf(target, largestGroup) < largestGroup && chance_.oneIn(4) ? 300 : 7;
        operation.name = "set " + std::to_string(count) + " from " + std::to_string(first);
        operation.onReal = [=](ZANFieldGroup& group, RealSide&) {
            for (int i = 0; i < count; ++i) {
                group.setFieldValue(first + i * 37 % count, 5L);
            }
            return nothing();
        };
        operation.onReference = [=](Model& model, Group& group, ReferenceSide&) {
            Value five;
            five.setLong(5);
            for (int i = 0; i < count; ++i) {
                model.setTyped(group, first + i * 37 % count, five, "setLong");
            }
            return nothing();
        };
    }

    void read(Operation& operation, Group const&) {
        int const tag = chance_.tag();
        operation.name = "read " + std::to_string(tag);
        operation.onReal = [=](ZANFieldGroup& group, RealSide&) {
            std::string const there =
                std::to_string(group.has(tag)) + std::to_string(group.isGroupPresent(tag));
            return there + group.getString(tag, "absent");
        };
        operation.onReference = [=](Model& model, Group& group, ReferenceSide&) {
            std::string const there = std::to_string(model.isFieldPresent(group, tag)) +
                                      std::to_string(model.isGroupPresent(group, tag));
            return there + model.getString(group, tag);
        };
    }

    void addField(Operation& operation, Group const&) {
        auto const index =
            static_cast<std::size_t>(chance_.below(static_cast<int>(expected_.fields.size())));
        operation.name = "add held field " + std::to_string(index);
        operation.onReal = [=](ZANFieldGroup& group, RealSide& side) {
            group.addField(side.fields[index]);
            return nothing();
        };
        operation.onReference = [=](Model& model, Group& group, ReferenceSide& side) {
            model.addField(group, side.fields[index]);
            return nothing();
        };
    }

    void removeField(Operation& operation, Group const&) {
        int const tag = chance_.tag();
        operation.name = "remove field " + std::to_string(tag);
        operation.onReal = [=](ZANFieldGroup& group, RealSide&) {
            group.removeField(tag);
            return nothing();
        };
        operation.onReference = [=](Model& model, Group& group, ReferenceSide&) {
            model.removeField(group, tag);
            return nothing();
        };
    }

    void addGroup(Operation& operation, Group const& target) {
        std::size_t const index = handle();
        auto const& inner = *expected_.groups[index];
        if (reference::contains(inner, target) || sizeOf(inner, largestGroup) >= largestGroup / 4) {
            return set(operation, target);
        }
        operation.name = "add held group " + std::to_string(index);
        operation.onReal = [=](ZANFieldGroup& group, RealSide& side) {
            group.addGroup(side.groups[index]);
            return nothing();
        };
        operation.onReference = [=](Model& model, Group& group, ReferenceSide& side) {
            model.addGroup(group, side.groups[index]);
            return nothing();
        };
    }

    void removeInstance(Operation& operation, Group const&) {
        int const tag = chance_.below(4);
        int const index = chance_.below(5) - 1;
        bool const erases = chance_.oneIn(2);
        operation.name = "remove instance " + std::to_string(tag) + "/" + std::to_string(index);
        operation.onReal = [=](ZANFieldGroup& group, RealSide&) {
            erases ? static_cast<void>(group.eraseGroup(tag, index))
                   : group.removeGroup(tag, index);
            return nothing();
        };
        operation.onReference = [=](Model& model, Group& group, ReferenceSide&) {
            erases ? model.eraseGroup(group, tag, index) : model.removeGroup(group, tag, index);
            return nothing();
        };
    }

    void removeAll(Operation& operation, Group const&) {
        int const tag = chance_.below(4);
        operation.name = "remove instances of " + std::to_string(tag);
        operation.onReal = [=](ZANFieldGroup& group, RealSide&) {
            group.removeGroup(tag);
            return nothing();
        };
        operation.onReference = [=](Model& model, Group& group, ReferenceSide&) {
            model.removeGroup(group, tag);
            return nothing();
        };
    }

    void clear(Operation& operation, Group const&) {
        operation.name = "clear";
        operation.onReal = [](ZANFieldGroup& group, RealSide&) {
            group.clear();
            return nothing();
        };
        operation.onReference = [](Model& model, Group& group, ReferenceSide&) {
            model.clear(group);
            return nothing();
        };
    }

    void assign(Operation& operation, Group const& target) {
        std::size_t const index = handle();
        if (sizeOf(*expected_.groups[index], largestGroup) >= largestGroup / 4) {
            return clear(operation, target);
        }
        operation.name = "assign held group " + std::to_string(index);
        operation.onReal = [=](ZANFieldGroup& group, RealSide& side) {
            group = *side.groups[index];
            return nothing();
        };
        operation.onReference = [=](Model& model, Group& group, ReferenceSide& side) {
            auto const other = side.groups[index];
            model.assign(group, *other);
            return nothing();
        };
    }

    void copyGroup(Operation& operation, Group const& target) {
        if (sizeOf(target, largestGroup) >= largestGroup / 4) {
            return clear(operation, target);
        }
        operation.name = "copy";
        operation.onReal = [](ZANFieldGroup& group, RealSide& side) {
            side.groups.emplace_back(new ZANFieldGroup(group));
            return nothing();
        };
        operation.onReference = [](Model& model, Group& group, ReferenceSide& side) {
            auto const copy = std::make_shared<Group>();
            model.assign(*copy, group);
            side.groups.push_back(copy);
            return nothing();
        };
    }

    void handOut(Operation& operation, Group const& target) {
        int const tag = chance_.below(4);
        auto const list = target.groups.find(tag);
        if (list == target.groups.end() || !list->second.back()) {
            return addField(operation, target);
        }
        int const index = static_cast<int>(list->second.size()) - 1;
        operation.name = "hand out an instance of " + std::to_string(tag);
        operation.onReal = [=](ZANFieldGroup& group, RealSide& side) {
            side.groups.push_back(group.ZANFieldGroup::getGroup(tag, index));
            return nothing();
        };
        operation.onReference = [=](Model&, Group& group, ReferenceSide& side) {
            side.groups.push_back(group.groups[tag].back());
            return nothing();
        };
    }

    void handOutField(Operation& operation, Group const& target) {
        int const tag = chance_.tag();
        auto const found = target.fields.find(tag);
        if (found == target.fields.end() || !found->second) {
            return set(operation, target);
        }
        operation.name = "hand out field " + std::to_string(tag);
        operation.onReal = [=](ZANFieldGroup& group, RealSide& side) {
            side.fields.push_back(group.ZANFieldGroup::getField(tag));
            return nothing();
        };
        operation.onReference = [=](Model&, Group& group, ReferenceSide& side) {
            side.fields.push_back(group.fields[tag]);
            return nothing();
        };
    }

    void changeHeldField(Operation& operation, Group const&) {
        auto const index =
            static_cast<std::size_t>(chance_.below(static_cast<int>(expected_.fields.size())));
        int const tag = chance_.tag();
        operation.name = "set the tag of held field " + std::to_string(index);
        operation.onReal = [=](ZANFieldGroup&, RealSide& side) {
            side.fields[index]->ZANField::setTag(tag);
            return nothing();
        };
        operation.onReference = [=](Model&, Group&, ReferenceSide& side) {
            side.fields[index]->tag = tag;
            return nothing();
        };
    }

    /// The field at a place of the group, by its number.
    static counted_ptr<ZANField>& fieldAt(ZANFieldGroup& group, int place,
                                          counted_ptr<ZANIterator<counted_ptr<ZANField>>>& fields) {
        for (fields = group.ZANFieldGroup::fieldIterator(); place > 0; --place) {
            fields->next();
        }
        return fields->current();
    }

    void replaceByIterator(Operation& operation, Group const& target) {
        if (target.fields.empty()) {
            return set(operation, target);
        }
        int const place = chance_.below(static_cast<int>(target.fields.size()));
        auto const index =
            static_cast<std::size_t>(chance_.below(static_cast<int>(expected_.fields.size())));
        operation.name = "replace through an iterator";
        operation.onReal = [=](ZANFieldGroup& group, RealSide& side) {
            counted_ptr<ZANIterator<counted_ptr<ZANField>>> fields;
            fieldAt(group, place, fields) = side.fields[index];
            return nothing();
        };
        operation.onReference = [=](Model&, Group& group, ReferenceSide& side) {
            std::next(group.fields.begin(), place)->second = side.fields[index];
            return nothing();
        };
    }

    void emptyPlace(Operation& operation, Group const& target) {
        int const place = chance_.below(static_cast<int>(target.fields.size()) + 1);
        int const tag = chance_.below(4);
        bool const ofField = place < static_cast<int>(target.fields.size());
        operation.name = "empty a place through an iterator";
        operation.onReal = [=](ZANFieldGroup& group, RealSide&) {
            counted_ptr<ZANIterator<counted_ptr<ZANField>>> fields;
            if (ofField) {
                fieldAt(group, place, fields) = nullptr;
            } else if (auto const instances = group.ZANFieldGroup::groupIterator(tag)) {
                instances->current() = nullptr;
            }
            return nothing();
        };
        operation.onReference = [=](Model&, Group& group, ReferenceSide&) {
            auto const list = group.groups.find(tag);
            if (ofField) {
                std::next(group.fields.begin(), place)->second = nullptr;
            } else if (list != group.groups.end()) {
                list->second.front() = nullptr;
            }
            return nothing();
        };
    }

    Chance& chance_;
    RealSide& real_;
    ReferenceSide& expected_;
};

} // namespace

Operation randomOperation(Chance& chance, RealSide& real, ReferenceSide& expected) {
    return Chooser(chance, real, expected).choose();
}
