/// Field groups as standard maps: every operation step by step, with the virtual calls that it
/// makes on the way. Nothing of the library is in it but `Value`.
#ifndef ZANENGINE_TESTS_MESSAGE_MODEL_REFERENCE_H
#define ZANENGINE_TESTS_MESSAGE_MODEL_REFERENCE_H

#include "Calls.h"
#include "infra/Value.h"

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace reference {

struct Field {
    int tag = 0;
    int type = 0;
    Value value;
    /// 0 for a plain field, which tells no calls.
    int id = 0;
};
using FieldPointer = std::shared_ptr<Field>;

struct Group;
using GroupPointer = std::shared_ptr<Group>;

struct Group {
    int tag = 0;
    int id = 0;
    std::map<int, FieldPointer> fields;
    std::map<int, std::vector<GroupPointer>> groups;
};

class Model {
public:
    explicit Model(Calls& calls) : calls_(calls) {}

    void setGroupTag(Group& group, int tag);
    int getGroupTag(Group const& group);
    void addField(Group& group, FieldPointer const& field);
    /// `kind` is the name of the typed setter's call.
    void setTyped(Group& group, int tag, Value const& value, std::string_view kind);
    void setAny(Group& group, int tag, Value const& value);
    void removeField(Group& group, int tag);
    bool isFieldPresent(Group& group, int tag);
    std::string getString(Group& group, int tag);
    void addGroup(Group& group, GroupPointer const& inner);
    bool isGroupPresent(Group& group, int tag);
    void removeGroup(Group& group, int tag, int index);
    void removeGroup(Group& group, int tag);
    void eraseGroup(Group& group, int tag, int index);
    void clear(Group& group);
    void setText(Group& group, int tag, std::string const& text, std::string_view operation);
    void assign(Group& group, Group const& other);

private:
    void call(int id, std::string_view name) {
        if (id != 0) {
            calls_.add(id, name);
        }
    }
    FieldPointer getField(Group const& group, int tag, std::string_view name);
    FieldPointer copyOf(Field const& field);
    void copy(Group& group, Group const& other);

    Calls& calls_;
};

/// Copies groups and fields with all that they share among each other.
class Cloner {
public:
    FieldPointer operator()(FieldPointer const& field);
    GroupPointer operator()(GroupPointer const& group);

private:
    std::map<Field*, FieldPointer> fields_;
    std::map<Group*, GroupPointer> groups_;
};

/// Whether `inner` is the group or a part of it.
bool contains(Group const& group, Group const& inner);

} // namespace reference

#endif
