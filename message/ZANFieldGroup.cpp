#include "message/ZANFieldGroup.h"

#include "infra/InfraException.h"
#include "message/FieldGroupIterators.h"
#include "message/FieldGroupStorage.h"
#include "message/GroupAccess.h"

#include <typeinfo>
#include <utility>
#include <vector>

namespace {

constexpr int msgTypeTag = 35;
constexpr int protocolVersionTag = 8;

// Room for a usual message body from the start.
constexpr std::size_t usualBodySize = 16;
constexpr std::size_t usualInstanceCount = 4;

// A derived class may have overridden any operation, so only plain objects take short cuts.
bool isPlainField(ZANField const& field) {
    return &typeid(field) == &typeid(ZANField);
}

bool isAsFiled(zan::FieldTable::Cursor const& cursor) {
    auto const& field = cursor.pointer();
    return field && zan::GroupAccess::isAsFiled(*field, cursor.tag());
}

counted_ptr<ZANField> copyOf(ZANField const& field) {
    if (isPlainField(field)) {
        return counted_ptr<ZANField>(new ZANField(field));
    }
    counted_ptr<ZANField> copy(new ZANField);
    *copy = field;
    return copy;
}

void put(zan::FieldTable& fields, int tag, counted_ptr<ZANField>&& field) {
    auto const place = fields.locate(tag);
    if (place.found) {
        // Let go when the new one is in its place: a destructor may change the table.
        counted_ptr<ZANField> replaced(std::move(field));
        fields.at(place).swap(replaced);
    } else {
        fields.insert(place, tag, std::move(field));
    }
}

std::vector<counted_ptr<ZANField>> allFields(zan::FieldTable const& fields) {
    std::vector<counted_ptr<ZANField>> all;
    all.reserve(fields.size());
    for (zan::FieldTable::Cursor cursor(fields); cursor.hasNext(); cursor.next()) {
        all.push_back(cursor.pointer());
    }
    return all;
}

void append(zan::GroupTable& groups, counted_ptr<ZANFieldGroup>&& group) {
    int const tag = group->getGroupTag();
    auto const place = groups.locate(tag);
    if (place.found) {
        groups.at(place)->instances.push_back(std::move(group));
    } else {
        counted_ptr<zan::InstanceList> list(new zan::InstanceList);
        list->instances.reserve(usualInstanceCount);
        list->instances.push_back(std::move(group));
        groups.insert(place, tag, std::move(list));
    }
}

} // namespace

ZANFieldGroup::ZANFieldGroup(int groupTag) : storage_(new Storage) {
    storage_->groupTag = groupTag;
}

ZANFieldGroup::ZANFieldGroup(std::string const& msgType) : storage_(new Storage) {
    storage_->fields.reserve(usualBodySize);
    setFieldValue(msgTypeTag, msgType);
}

ZANFieldGroup::ZANFieldGroup(std::string const& msgType, std::string const& protocolVersion)
    : ZANFieldGroup(msgType) {
    setFieldValue(protocolVersionTag, protocolVersion);
}

ZANFieldGroup::ZANFieldGroup(ZANFieldGroup const& other) : storage_(new Storage) {
    copyFrom(other);
}

ZANFieldGroup& ZANFieldGroup::operator=(ZANFieldGroup const& other) {
    if (this == &other) {
        return *this;
    }
    if (isPlain()) {
        assignPlain(other);
        return *this;
    }
    // `other` may be a part of this group: what the group holds lives on until the end.
    auto const heldGroups = zan::allInstances(storage_->groups);
    auto const heldFields = allFields(storage_->fields);
    clear();
    copyByOperations(other);
    return *this;
}

// What the group held lives on until the end, because `other` may be a part of it, and comes back
// when there is no memory for the copy.
void ZANFieldGroup::assignPlain(ZANFieldGroup const& other) {
    int const previousTag = std::exchange(storage_->groupTag, 0);
    zan::Contents previous;
    previous.swap(*storage_);
    try {
        copyFrom(other);
    } catch (...) {
        storage_->groupTag = previousTag;
        previous.swap(*storage_);
        throw;
    }
}

[[gnu::flatten]] ZANFieldGroup::~ZANFieldGroup() = default;

void ZANFieldGroup::setGroupTag(int groupTag) {
    storage_->groupTag = groupTag;
}

int ZANFieldGroup::getGroupTag() const {
    return storage_->groupTag;
}

bool ZANFieldGroup::empty() const {
    return isFieldsEmpty() && isGroupsEmpty();
}

void ZANFieldGroup::addField(counted_ptr<ZANField> field) {
    if (field) {
        int const tag = field->getTag();
        put(storage_->fields, tag, std::move(field));
    }
}

// The value is stored right where it stays. Written elsewhere and copied, it would be read in
// other pieces than it was written in, and wait for the writes to reach the cache.
template <class Payload>
[[gnu::always_inline]] inline void ZANFieldGroup::putValue(int tag, Payload const& payload) {
    auto& fields = storage_->fields;
    auto const place = fields.locate(tag);
    if (!place.found) {
        fields.insert(place, tag, zan::GroupAccess::newField(tag, std::in_place, payload));
        return;
    }
    auto& field = fields.at(place);
    if (!field) { // an iterator can empty a place
        field = zan::GroupAccess::newField(tag, std::in_place, payload);
    } else if (isPlainField(*field)) {
        field->putValue(payload);
    } else {
        setByOperation(field, payload);
    }
}

// The field may take itself out of the group meanwhile.
template <class Payload>
void ZANFieldGroup::setByOperation(counted_ptr<ZANField> field, Payload const& payload) {
    if constexpr (std::is_same_v<Payload, Value>) {
        field->setValue(payload);
    } else {
        field->setValue(Value(std::in_place, payload));
    }
}

void ZANFieldGroup::setFieldValue(int tag, char value) {
    isPlain() ? putValue(tag, value) : setFieldValue(tag, Value(std::in_place, value));
}

void ZANFieldGroup::setFieldValue(int tag, bool value) {
    isPlain() ? putValue(tag, value) : setFieldValue(tag, Value(std::in_place, value));
}

void ZANFieldGroup::setFieldValue(int tag, double value) {
    isPlain() ? putValue(tag, value) : setFieldValue(tag, Value(std::in_place, value));
}

void ZANFieldGroup::setFieldValue(int tag, long value) {
    isPlain() ? putValue(tag, value) : setFieldValue(tag, Value(std::in_place, value));
}

void ZANFieldGroup::setFieldValue(int tag, int value) {
    setFieldValue(tag, static_cast<long>(value));
}

void ZANFieldGroup::setFieldValue(int tag, std::string const& value) {
    isPlain() ? putValue(tag, value) : setFieldValue(tag, Value(std::in_place, value));
}

void ZANFieldGroup::setFieldValue(int tag, Value const& value) {
    if (isPlain()) {
        putValue(tag, value);
        return;
    }
    if (auto const field = getField(tag)) {
        field->setValue(value);
    } else {
        addField(counted_ptr<ZANField>(new ZANField(tag, value.getType(), value)));
    }
}

void ZANFieldGroup::setFieldValue(int tag, char const* value) {
    if (!value) {
        throw InfraException("The text for the field with tag " + std::to_string(tag) +
                             " is a null pointer: give a text, \"\" for an empty one.");
    }
    setFieldValue(tag, std::string(value));
}

void ZANFieldGroup::removeField(int tag) {
    storage_->fields.remove(tag);
}

counted_ptr<ZANField> ZANFieldGroup::getField(int tag) {
    return static_cast<ZANFieldGroup const*>(this)->ZANFieldGroup::getField(tag);
}

counted_ptr<ZANField> ZANFieldGroup::getField(int tag) const {
    auto const* field = storage_->fields.find(tag);
    return field ? *field : nullptr;
}

bool ZANFieldGroup::isFieldPresent(int tag) const {
    return static_cast<bool>(getField(tag));
}

bool ZANFieldGroup::isFieldsEmpty() const {
    return storage_->fields.empty();
}

counted_ptr<ZANIterator<counted_ptr<ZANField>>> ZANFieldGroup::fieldIterator() {
    return static_cast<ZANFieldGroup const*>(this)->ZANFieldGroup::fieldIterator();
}

counted_ptr<ZANIterator<counted_ptr<ZANField>>> ZANFieldGroup::fieldIterator() const {
    return counted_ptr<FieldIterator>(new zan::FieldIteratorImpl(storage_->fields));
}

void ZANFieldGroup::addGroup(counted_ptr<ZANFieldGroup> group) {
    if (group) {
        append(storage_->groups, std::move(group));
    }
}

int ZANFieldGroup::getGroupCount(int groupTag) const {
    auto const* list = storage_->groups.find(groupTag);
    return list ? static_cast<int>((*list)->instances.size()) : 0;
}

counted_ptr<ZANFieldGroup> ZANFieldGroup::getGroup(int groupTag, int index) {
    return static_cast<ZANFieldGroup const*>(this)->ZANFieldGroup::getGroup(groupTag, index);
}

counted_ptr<ZANFieldGroup> ZANFieldGroup::getGroup(int groupTag, int index) const {
    auto const* list = storage_->groups.find(groupTag);
    // Widened with its sign and compared unsigned: a negative index is out of range too.
    auto const position = static_cast<std::size_t>(static_cast<std::ptrdiff_t>(index));
    if (!list || position >= (*list)->instances.size()) {
        return nullptr;
    }
    return (*list)->instances[position];
}

void ZANFieldGroup::removeGroup(int groupTag, int index) {
    auto const* list = storage_->groups.find(groupTag);
    // The stop rule is meant: only an index equal to the count ends the search.
    if (list && index > 0 && static_cast<std::size_t>(index) == (*list)->instances.size()) {
        eraseGroup(groupTag, index - 1);
    }
}

void ZANFieldGroup::removeGroup(int groupTag) {
    if (auto const list = storage_->groups.remove(groupTag)) {
        // An iterator may hold the list, but not what was in it.
        zan::Instances ending;
        ending.swap(list->instances);
    }
}

bool ZANFieldGroup::isGroupPresent(int groupTag) const {
    return getGroupCount(groupTag) > 0;
}

bool ZANFieldGroup::isGroupsEmpty() const {
    return storage_->groups.empty();
}

counted_ptr<ZANIterator<counted_ptr<ZANFieldGroup>>> ZANFieldGroup::groupIterator(int groupTag) {
    return static_cast<ZANFieldGroup const*>(this)->ZANFieldGroup::groupIterator(groupTag);
}

counted_ptr<ZANIterator<counted_ptr<ZANFieldGroup>>>
ZANFieldGroup::groupIterator(int groupTag) const {
    auto const* list = storage_->groups.find(groupTag);
    if (!list) {
        return nullptr;
    }
    return counted_ptr<GroupIterator>(new zan::SubGroupIteratorImpl(*list));
}

counted_ptr<ZANIterator<counted_ptr<ZANFieldGroup>>> ZANFieldGroup::groupIterator() {
    return static_cast<ZANFieldGroup const*>(this)->ZANFieldGroup::groupIterator();
}

counted_ptr<ZANIterator<counted_ptr<ZANFieldGroup>>> ZANFieldGroup::groupIterator() const {
    return counted_ptr<GroupIterator>(new zan::AllGroupIteratorImpl(storage_->groups));
}

void ZANFieldGroup::clear() {
    setGroupTag(0);
    zan::Contents emptied;
    emptied.swap(*storage_);
}

void ZANFieldGroup::setProtocolVersion(std::string const& protocolVersion) {
    setFieldValue(protocolVersionTag, protocolVersion);
}

void ZANFieldGroup::setMsgType(std::string const& msgType) {
    setFieldValue(msgTypeTag, msgType);
}

bool ZANFieldGroup::eraseGroup(int groupTag, int index) {
    auto const* list = storage_->groups.find(groupTag);
    auto const position = static_cast<std::size_t>(static_cast<std::ptrdiff_t>(index));
    if (!list || position >= (*list)->instances.size()) {
        return false;
    }
    auto& instances = (*list)->instances;
    // Taken out first: the instance may be the last holder of something that looks at this group.
    counted_ptr<ZANFieldGroup> const removed = std::move(instances[position]);
    instances.erase(instances.begin() + static_cast<std::ptrdiff_t>(position));
    if (instances.empty()) {
        storage_->groups.remove(groupTag);
    }
    return true;
}

bool ZANFieldGroup::isPlain() const {
    return &typeid(*this) == &typeid(ZANFieldGroup);
}

void ZANFieldGroup::copyFrom(ZANFieldGroup const& other) {
    if (other.isPlain()) {
        storage_->groupTag = other.storage_->groupTag;
        copyPlainFields(other);
        copyPlainGroups(other);
    } else {
        copyByOperations(other);
    }
}

void ZANFieldGroup::copyByOperations(ZANFieldGroup const& other) {
    setGroupTag(other.getGroupTag());
    for (auto const fields = other.fieldIterator(); fields->hasNext(); fields->next()) {
        if (counted_ptr<ZANField> const field = fields->current()) {
            addField(copyOf(*field));
        }
    }
    for (auto const groups = other.groupIterator(); groups->hasNext(); groups->next()) {
        if (counted_ptr<ZANFieldGroup> const group = groups->current()) {
            addGroup(counted_ptr<ZANFieldGroup>(new ZANFieldGroup(*group)));
        }
    }
}

[[gnu::flatten]] void ZANFieldGroup::copyPlainFields(ZANFieldGroup const& other) {
    auto const& fields = other.storage_->fields;
    auto& copies = storage_->fields;
    copies.reserve(fields.size());
    zan::FieldTable::Cursor cursor(fields);
    for (; cursor.hasNext() && isAsFiled(cursor); cursor.next()) {
        copies.append(cursor.tag(), zan::GroupAccess::newField(*cursor.pointer()));
    }
    if (cursor.hasNext()) {
        copyOddFields(zan::FieldIteratorImpl(fields, cursor));
    }
}

// Their operations may change the group that they belong to.
void ZANFieldGroup::copyOddFields(FieldIterator&& others) {
    for (; others.hasNext(); others.next()) {
        if (counted_ptr<ZANField> const field = others.current()) {
            auto copy = copyOf(*field);
            int const tag = copy->tag_;
            put(storage_->fields, tag, std::move(copy));
        }
    }
}

void ZANFieldGroup::copyPlainGroups(ZANFieldGroup const& other) {
    if (!other.storage_->groups.empty()) {
        for (auto const& instance : zan::allInstances(other.storage_->groups)) {
            append(storage_->groups, counted_ptr<ZANFieldGroup>(new ZANFieldGroup(*instance)));
        }
    }
}
