#include "message/ZANFieldGroup.h"

#include "infra/InfraException.h"
#include "message/FieldGroupIterators.h"
#include "message/FieldGroupStorage.h"

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

void put(zan::FieldTable& fields, counted_ptr<ZANField>&& field) {
    int const tag = field->getTag();
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

ZANFieldGroup::~ZANFieldGroup() = default;

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
        put(storage_->fields, std::move(field));
    }
}

template <class Store>
void ZANFieldGroup::setTyped(int tag, int type, Store store) {
    Value value;
    value.setType(type);
    store(value);
    if (isPlain()) {
        storeValue(tag, std::move(value));
    } else {
        setFieldValue(tag, static_cast<Value const&>(value));
    }
}

void ZANFieldGroup::setFieldValue(int tag, char value) {
    setTyped(tag, Value::CHAR, [value](Value& target) { target.setChar(value); });
}

void ZANFieldGroup::setFieldValue(int tag, bool value) {
    setTyped(tag, Value::BOOL, [value](Value& target) { target.setBool(value); });
}

void ZANFieldGroup::setFieldValue(int tag, double value) {
    setTyped(tag, Value::DOUBLE, [value](Value& target) { target.setDouble(value); });
}

void ZANFieldGroup::setFieldValue(int tag, long value) {
    setTyped(tag, Value::LONG, [value](Value& target) { target.setLong(value); });
}

void ZANFieldGroup::setFieldValue(int tag, int value) {
    setFieldValue(tag, static_cast<long>(value));
}

void ZANFieldGroup::setFieldValue(int tag, std::string const& value) {
    setTyped(tag, Value::STRING, [&value](Value& target) { target.setString(value); });
}

void ZANFieldGroup::setFieldValue(int tag, Value const& value) {
    if (isPlain()) {
        storeValue(tag, Value(value));
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

void ZANFieldGroup::storeValue(int tag, Value&& value) {
    auto& fields = storage_->fields;
    auto const place = fields.locate(tag);
    if (place.found) {
        fields.at(place)->setValue(value);
    } else {
        int const type = value.getType();
        fields.insert(place, tag, counted_ptr<ZANField>(new ZANField(tag, type, std::move(value))));
    }
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
    zan::FieldTable fields;
    zan::GroupTable groups;
    fields.swap(storage_->fields);
    groups.swap(storage_->groups);
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
    setGroupTag(other.getGroupTag());
    copyFieldsOf(other);
    copyGroupsOf(other);
}

void ZANFieldGroup::copyFieldsOf(ZANFieldGroup const& other) {
    if (isPlain() && other.isPlain()) {
        auto const& fields = other.storage_->fields;
        storage_->fields.reserve(fields.size());
        for (zan::FieldTable::Cursor cursor(fields); cursor.hasNext(); cursor.next()) {
            put(storage_->fields, copyOf(*cursor.pointer()));
        }
        return;
    }
    for (auto const fields = other.fieldIterator(); fields->hasNext(); fields->next()) {
        addField(copyOf(*fields->current()));
    }
}

void ZANFieldGroup::copyGroupsOf(ZANFieldGroup const& other) {
    if (other.isGroupsEmpty()) {
        return;
    }
    for (auto const groups = other.groupIterator(); groups->hasNext(); groups->next()) {
        addGroup(counted_ptr<ZANFieldGroup>(new ZANFieldGroup(*groups->current())));
    }
}

void* ZANFieldGroup::operator new(std::size_t size) {
    return zan::pool::allocate(size);
}

void ZANFieldGroup::operator delete(void* group, std::size_t size) noexcept {
    zan::pool::release(group, size);
}
