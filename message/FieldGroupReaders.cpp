// What a field group offers beside its virtual operations. Groups and fields of derived classes are
// read through those operations; of plain ones the values are read where they are.
#include "infra/InfraException.h"
#include "message/FieldGroupRanges.h"
#include "message/FieldGroupStorage.h"
#include "message/GroupAccess.h"

#include <iterator>
#include <limits>
#include <string>
#include <utility>

namespace {

/// The value of a group's field, or null. `held` keeps alive what an override has handed out.
Value const* valueOf(ZANFieldGroup const& group, int tag, counted_ptr<ZANField>& held) {
    if (zan::GroupAccess::isPlain(group)) {
        auto const* const slot = zan::GroupAccess::fields(group).find(tag);
        if (!slot || !*slot) {
            return nullptr;
        }
        if (zan::GroupAccess::isPlain(**slot)) {
            return &zan::GroupAccess::value(**slot);
        }
        held = *slot;
    } else {
        held = group.getField(tag);
    }
    return held ? &held->getValue() : nullptr;
}

template <class Result>
Result read(ZANFieldGroup const& group, int tag, Result defaultValue,
            Result (Value::*reading)() const) {
    counted_ptr<ZANField> held;
    Value const* const value = valueOf(group, tag, held);
    if (!value) {
        return defaultValue;
    }
    try {
        return (value->*reading)();
    } catch (InfraException const& e) {
        throw InfraException("Field " + std::to_string(tag) + ": " + e.getMessage());
    }
}

template <class Number>
long checkedLong(int tag, Number number) {
    if (!std::in_range<long>(number)) {
        using Limits = std::numeric_limits<long>;
        throw InfraException("Field " + std::to_string(tag) + " cannot hold the number " +
                             std::to_string(number) + ": whole numbers go from " +
                             std::to_string(Limits::min()) + " to " +
                             std::to_string(Limits::max()) + ".");
    }
    return static_cast<long>(number);
}

} // namespace

std::optional<Value> ZANFieldGroup::find(int tag) const {
    counted_ptr<ZANField> held;
    Value const* const value = valueOf(*this, tag, held);
    return value ? std::optional<Value>(*value) : std::nullopt;
}

bool ZANFieldGroup::has(int tag) const {
    return isFieldPresent(tag);
}

std::size_t ZANFieldGroup::size() const {
    return static_cast<std::size_t>(std::distance(begin(), end()));
}

std::string ZANFieldGroup::getString(int tag, std::string_view defaultValue) const {
    counted_ptr<ZANField> held;
    Value const* const value = valueOf(*this, tag, held);
    return value ? value->asString() : std::string(defaultValue);
}

long ZANFieldGroup::getLong(int tag, long defaultValue) const {
    return read(*this, tag, defaultValue, &Value::asLong);
}

int ZANFieldGroup::getInt(int tag, int defaultValue) const {
    return read(*this, tag, defaultValue, &Value::asInt);
}

double ZANFieldGroup::getDouble(int tag, double defaultValue) const {
    return read(*this, tag, defaultValue, &Value::asDouble);
}

bool ZANFieldGroup::getBool(int tag, bool defaultValue) const {
    return read(*this, tag, defaultValue, &Value::asBool);
}

char ZANFieldGroup::getChar(int tag, char defaultValue) const {
    return read(*this, tag, defaultValue, &Value::asChar);
}

zan::FieldCursor ZANFieldGroup::begin() const {
    return zan::FieldCursor(*this);
}

zan::FieldCursor ZANFieldGroup::end() const {
    return {};
}

zan::InstanceRange ZANFieldGroup::instances(int groupTag) const {
    return {*this, groupTag};
}

void ZANFieldGroup::setFieldValue(int tag, long long value) {
    setFieldValue(tag, checkedLong(tag, value));
}

void ZANFieldGroup::setFieldValue(int tag, unsigned value) {
    setFieldValue(tag, checkedLong(tag, value));
}

void ZANFieldGroup::setFieldValue(int tag, unsigned long value) {
    setFieldValue(tag, checkedLong(tag, value));
}

void ZANFieldGroup::setFieldValue(int tag, unsigned long long value) {
    setFieldValue(tag, checkedLong(tag, value));
}

namespace zan {

FieldCursor::FieldCursor(ZANFieldGroup const& group) : fields_(group.fieldIterator()) {
    settle();
}

FieldCursor& FieldCursor::operator++() {
    fields_->next();
    settle();
    return *this;
}

// An iterator can empty the place of a field; such a place is passed over.
void FieldCursor::settle() {
    field_.reset();
    while (!field_ && fields_->hasNext()) {
        field_ = fields_->current();
        if (!field_) {
            fields_->next();
        }
    }
}

InstanceCursor::InstanceCursor(ZANFieldGroup const& group, int groupTag)
    : group_(&group), groupTag_(groupTag) {
    settle();
}

InstanceCursor& InstanceCursor::operator++() {
    ++index_;
    settle();
    return *this;
}

void InstanceCursor::settle() {
    instance_.reset();
    for (int const count = group_->getGroupCount(groupTag_); index_ < count; ++index_) {
        instance_ = group_->getGroup(groupTag_, index_);
        if (instance_) {
            return;
        }
    }
}

InstanceCursor InstanceRange::begin() const {
    return {*group_, groupTag_};
}

InstanceCursor InstanceRange::end() const {
    return {};
}

} // namespace zan
