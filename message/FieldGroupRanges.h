/// What a `for` loop over a field group walks with: over its fields, and over the instances of one
/// of its repeating groups.
///
/// Threads: as for the group.
#ifndef ZANENGINE_MESSAGE_FIELDGROUPRANGES_H
#define ZANENGINE_MESSAGE_FIELDGROUPRANGES_H

#include "infra/Export.h"
#include "infra/counted_ptr.h"
#include "message/ZANField.h"
#include "message/ZANIterator.h"

#include <cstddef>
#include <iterator>

class ZANFieldGroup;

namespace zan {

/// Stands on one field after the other, by ascending tag; one pass, as copies share the walk. A
/// reference to a field is valid until the cursor moves on: take what is wanted for longer by
/// `getField`. The cursor must not outlive the group, and adding or removing a field ends the walk.
class ZAN_API FieldCursor {
public:
    using iterator_category = std::input_iterator_tag;
    using value_type = ZANField;
    using difference_type = std::ptrdiff_t;
    using pointer = ZANField const*;
    using reference = ZANField const&;

    /// Stands behind the last field of any group.
    FieldCursor() = default;
    explicit FieldCursor(ZANFieldGroup const& group);

    ZANField const& operator*() const { return *field_; }
    ZANField const* operator->() const { return field_.get(); }
    FieldCursor& operator++();
    void operator++(int) { ++*this; }

    friend bool operator==(FieldCursor const& left, FieldCursor const& right) {
        return left.field_ == right.field_;
    }
    friend bool operator!=(FieldCursor const& left, FieldCursor const& right) {
        return !(left == right);
    }

private:
    void settle();

    counted_ptr<ZANIterator<counted_ptr<ZANField>>> fields_;
    counted_ptr<ZANField> field_;
};

/// Stands on one instance of a repeating group after the other, in their order. A reference to an
/// instance is valid until the cursor moves on. The cursor must not outlive the group; instances
/// that are added behind it are visited too.
class ZAN_API InstanceCursor {
public:
    using iterator_category = std::input_iterator_tag;
    using value_type = ZANFieldGroup;
    using difference_type = std::ptrdiff_t;
    using pointer = ZANFieldGroup const*;
    using reference = ZANFieldGroup const&;

    /// Stands behind the last instance of any group.
    InstanceCursor() = default;
    InstanceCursor(ZANFieldGroup const& group, int groupTag);

    ZANFieldGroup const& operator*() const { return *instance_; }
    ZANFieldGroup const* operator->() const { return instance_.get(); }
    InstanceCursor& operator++();
    void operator++(int) { ++*this; }

    friend bool operator==(InstanceCursor const& left, InstanceCursor const& right) {
        return left.instance_ == right.instance_;
    }
    friend bool operator!=(InstanceCursor const& left, InstanceCursor const& right) {
        return !(left == right);
    }

private:
    void settle();

    ZANFieldGroup const* group_ = nullptr;
    int groupTag_ = 0;
    int index_ = 0;
    counted_ptr<ZANFieldGroup> instance_;
};

/// The instances under one group tag; none when the tag is absent. It must not outlive the group.
class ZAN_API InstanceRange {
public:
    InstanceRange(ZANFieldGroup const& group, int groupTag) : group_(&group), groupTag_(groupTag) {}

    [[nodiscard]] InstanceCursor begin() const;
    [[nodiscard]] InstanceCursor end() const;

private:
    ZANFieldGroup const* group_;
    int groupTag_;
};

} // namespace zan

#endif
