#include "Reference.h"

#include <utility>

namespace reference {

void Model::setGroupTag(Group& group, int tag) {
    call(group.id, "setGroupTag");
    group.tag = tag;
}

int Model::getGroupTag(Group const& group) {
    call(group.id, "getGroupTag");
    return group.tag;
}

void Model::addField(Group& group, FieldPointer const& field) {
    call(group.id, "addField");
    if (field) {
        call(field->id, "getTag");
        group.fields[field->tag] = field;
    }
}

FieldPointer Model::getField(Group const& group, int tag, std::string_view name) {
    call(group.id, name);
    auto const found = group.fields.find(tag);
    return found == group.fields.end() ? nullptr : found->second;
}

void Model::setTyped(Group& group, int tag, Value const& value, std::string_view kind) {
    call(group.id, kind);
    if (kind == "setInt") {
        call(group.id, "setLong");
    }
    setAny(group, tag, value);
}

void Model::setAny(Group& group, int tag, Value const& value) {
    call(group.id, "setAny");
    if (auto const field = getField(group, tag, "getField")) {
        call(field->id, "setValue");
        field->value = value;
    } else {
        addField(group, std::make_shared<Field>(Field{tag, value.getType(), value, 0}));
    }
}

void Model::removeField(Group& group, int tag) {
    call(group.id, "removeField");
    group.fields.erase(tag);
}

bool Model::isFieldPresent(Group& group, int tag) {
    call(group.id, "isFieldPresent");
    return getField(group, tag, "getField const") != nullptr;
}

std::string Model::getString(Group& group, int tag) {
    auto const field = getField(group, tag, "getField const");
    if (!field) {
        return "absent";
    }
    call(field->id, "getValue");
    return field->value.asString();
}

void Model::addGroup(Group& group, GroupPointer const& inner) {
    call(group.id, "addGroup");
    if (inner) {
        int const tag = getGroupTag(*inner);
        group.groups[tag].push_back(inner);
    }
}

bool Model::isGroupPresent(Group& group, int tag) {
    call(group.id, "isGroupPresent");
    call(group.id, "getGroupCount");
    return group.groups.count(tag) > 0;
}

void Model::removeGroup(Group& group, int tag, int index) {
    call(group.id, "removeIndex");
    auto const list = group.groups.find(tag);
    if (list != group.groups.end() && index == static_cast<int>(list->second.size())) {
        eraseGroup(group, tag, index - 1);
    }
}

void Model::removeGroup(Group& group, int tag) {
    call(group.id, "removeGroup");
    group.groups.erase(tag);
}

void Model::eraseGroup(Group& group, int tag, int index) {
    auto const list = group.groups.find(tag);
    if (list == group.groups.end() || index < 0 || index >= static_cast<int>(list->second.size())) {
        return;
    }
    list->second.erase(list->second.begin() + index);
    if (list->second.empty()) {
        group.groups.erase(list);
    }
}

void Model::clear(Group& group) {
    call(group.id, "clear");
    setGroupTag(group, 0);
    group.fields.clear();
    group.groups.clear();
}

void Model::setText(Group& group, int tag, std::string const& text, std::string_view operation) {
    call(group.id, operation);
    Value value;
    value.setString(text);
    setTyped(group, tag, value, "setString");
}

FieldPointer Model::copyOf(Field const& field) {
    auto copy = std::make_shared<Field>();
    call(field.id, "getTag");
    copy->tag = field.tag;
    call(field.id, "getType");
    copy->type = field.type;
    call(field.id, "getValue");
    copy->value = field.value;
    return copy;
}

void Model::copy(Group& group, Group const& other) {
    setGroupTag(group, getGroupTag(other));
    call(other.id, "fieldIterator const");
    for (auto const& [tag, field] : std::map(other.fields)) {
        if (field) {
            addField(group, copyOf(*field));
        }
    }
    call(other.id, "groupIterator const");
    for (auto const& [tag, instances] : std::map(other.groups)) {
        for (auto const& instance : instances) {
            if (instance) {
                auto inner = std::make_shared<Group>();
                copy(*inner, *instance);
                addGroup(group, inner);
            }
        }
    }
}

void Model::assign(Group& group, Group const& other) {
    if (&group == &other) {
        return;
    }
    // What the group holds lives on until the end.
    auto const before = group;
    clear(group);
    try {
        copy(group, other);
    } catch (...) {
        if (group.id == 0) {
            group = before;
        }
        throw;
    }
}

FieldPointer Cloner::operator()(FieldPointer const& field) {
    auto& clone = fields_[field.get()];
    if (field && !clone) {
        clone = std::make_shared<Field>(*field);
    }
    return clone;
}

GroupPointer Cloner::operator()(GroupPointer const& group) {
    if (!group) {
        return nullptr;
    }
    if (auto const known = groups_.find(group.get()); known != groups_.end()) {
        return known->second;
    }
    auto clone = std::make_shared<Group>(*group);
    groups_[group.get()] = clone;
    for (auto& [tag, field] : clone->fields) {
        field = (*this)(field);
    }
    for (auto& [tag, instances] : clone->groups) {
        for (auto& instance : instances) {
            instance = (*this)(instance);
        }
    }
    return clone;
}

bool contains(Group const& group, Group const& inner) {
    if (&group == &inner) {
        return true;
    }
    for (auto const& [tag, instances] : group.groups) {
        for (auto const& instance : instances) {
            if (instance && contains(*instance, inner)) {
                return true;
            }
        }
    }
    return false;
}

} // namespace reference
