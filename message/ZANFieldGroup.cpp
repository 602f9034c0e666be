#include "message/ZANFieldGroup.h"

#include "infra/InfraException.h"
#include "message/FieldGroupIterators.h"
#include "message/FieldGroupStorage.h"
#include "message/GroupAccess.h"

#include <typeinfo>
#include <utility>

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
        fields.at(place) = std::move(field);
    } else {
        fields.insert(place, tag, std::move(field));
    }
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
    if (this != &other) {
        // What the group held lives on until the end: `other` may be one of its sub-groups.
        counted_ptr<Storage> previous(new Storage);
        previous.swap(storage_);
        clear();
        copyFrom(other);
    }
    return *this;
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
    } else if (isPlainField(*fields.at(place))) {
        fields.at(place)->putValue(payload);
    } else {
        fields.at(place)->setValue(Value(std::in_place, payload));
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
    // The stop rule is meant: only an index equal to the count ends the search.
    if (index > 0 && index == getGroupCount(groupTag)) {
        eraseGroup(groupTag, index - 1);
    }
}

void ZANFieldGroup::removeGroup(int groupTag) {
    storage_->groups.remove(groupTag);
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
    return counted_ptr<GroupIterator>(new zan::SubGroupIteratorImpl(**list));
}

counted_ptr<ZANIterator<counted_ptr<ZANFieldGroup>>> ZANFieldGroup::groupIterator() {
    return static_cast<ZANFieldGroup const*>(this)->ZANFieldGroup::groupIterator();
}

counted_ptr<ZANIterator<counted_ptr<ZANFieldGroup>>> ZANFieldGroup::groupIterator() const {
    return counted_ptr<GroupIterator>(new zan::AllGroupIteratorImpl(storage_->groups));
}

void ZANFieldGroup::clear() {
    setGroupTag(0);
    // Emptied first and let go afterwards: a destructor may look at this group.
    counted_ptr<Storage> emptied(new Storage);
    emptied->groupTag = storage_->groupTag;
    emptied.swap(storage_);
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
    if (isPlain() && other.isPlain()) {
        storage_->groupTag = other.storage_->groupTag;
        copyPlainFields(other);
        copyPlainGroups(other);
        return;
    }
    setGroupTag(other.getGroupTag());
    for (auto const fields = other.fieldIterator(); fields->hasNext(); fields->next()) {
        addField(copyOf(*fields->current()));
    }
    for (auto const groups = other.groupIterator(); groups->hasNext(); groups->next()) {
        addGroup(counted_ptr<ZANFieldGroup>(new ZANFieldGroup(*groups->current())));
    }
}

[[gnu::flatten]] void ZANFieldGroup::copyPlainFields(ZANFieldGroup const& other) {
    auto const& fields = other.storage_->fields;
    auto& copies = storage_->fields;
    copies.reserve(fields.size());
    zan::FieldTable::Cursor cursor(fields);
    for (; cursor.hasNext() && zan::GroupAccess::isAsFiled(*cursor.pointer(), cursor.tag());
         cursor.next()) {
        copies.append(cursor.tag(), zan::GroupAccess::newField(*cursor.pointer()));
    }
    for (; cursor.hasNext(); cursor.next()) {
        auto copy = copyOf(*cursor.pointer());
        int const tag = copy->tag_;
        put(copies, tag, std::move(copy));
    }
}

void ZANFieldGroup::copyPlainGroups(ZANFieldGroup const& other) {
    auto const& groups = other.storage_->groups;
    for (zan::GroupTable::Cursor cursor(groups); cursor.hasNext(); cursor.next()) {
        for (auto const& instance : cursor.pointer()->instances) {
            if (instance) {
                append(storage_->groups, counted_ptr<ZANFieldGroup>(new ZANFieldGroup(*instance)));
            }
        }
    }
}
