/// The three iterators of a field group.
///
/// A field or an instance that is added or removed ends an iterator by contract; it must not do
/// harm all the same, because a callback may change the group while someone walks over it.
#ifndef ZANENGINE_MESSAGE_FIELDGROUPITERATORS_H
#define ZANENGINE_MESSAGE_FIELDGROUPITERATORS_H

#include "message/FieldGroupStorage.h"

#include <cstddef>
#include <limits>
#include <utility>

namespace zan {

/// Walks over the fields of a group as they are.
class FieldIteratorImpl final : public ZANFieldGroup::FieldIterator, public Pooled {
public:
    explicit FieldIteratorImpl(FieldTable const& fields)
        : FieldIteratorImpl(fields, FieldTable::Cursor(fields)) {}
    FieldIteratorImpl(FieldTable const& fields, FieldTable::Cursor cursor)
        : fields_(&fields), cursor_(cursor) {
        settle();
    }

    bool hasNext() const override {
        refresh();
        return !atEnd_;
    }

    void next() override {
        if (changes_ == fields_->changes()) {
            cursor_.next();
        } else if (tag_ < std::numeric_limits<int>::max()) {
            cursor_ = FieldTable::Cursor(*fields_, tag_ + 1);
        } else {
            atEnd_ = true;
            return;
        }
        settle();
    }

    counted_ptr<ZANField>& current() override { return here(); }
    counted_ptr<ZANField> const& current() const override { return here(); }

private:
    // Where its field was removed the iterator stands on the following one.
    void refresh() const {
        if (changes_ != fields_->changes() && !atEnd_) {
            cursor_ = FieldTable::Cursor(*fields_, tag_);
            settle();
        }
    }

    void settle() const {
        changes_ = fields_->changes();
        atEnd_ = !cursor_.hasNext();
        tag_ = atEnd_ ? tag_ : cursor_.tag();
    }

    counted_ptr<ZANField>& here() const {
        refresh();
        return atEnd_ ? none_ : cursor_.pointer();
    }

    FieldTable const* fields_;
    FieldTable::Cursor mutable cursor_;
    unsigned mutable changes_ = 0;
    int mutable tag_ = 0;
    bool mutable atEnd_ = false;
    counted_ptr<ZANField> mutable none_;
};

/// Walks over the instances of one group tag as they are.
class SubGroupIteratorImpl final : public ZANFieldGroup::GroupIterator, public Pooled {
public:
    explicit SubGroupIteratorImpl(counted_ptr<InstanceList> list) : list_(std::move(list)) {}

    bool hasNext() const override { return position_ < list_->instances.size(); }
    void next() override { ++position_; }
    counted_ptr<ZANFieldGroup>& current() override { return here(); }
    counted_ptr<ZANFieldGroup> const& current() const override { return here(); }

private:
    counted_ptr<ZANFieldGroup>& here() const {
        return hasNext() ? list_->instances[position_] : none_;
    }

    counted_ptr<InstanceList> list_;
    std::size_t position_ = 0;
    counted_ptr<ZANFieldGroup> mutable none_;
};

/// Walks over every instance that a group had when the iterator was made, and holds them all.
class AllGroupIteratorImpl final : public ZANFieldGroup::GroupIterator, public Pooled {
public:
    explicit AllGroupIteratorImpl(GroupTable const& groups) : inner_(snapshotOf(groups)) {}

    bool hasNext() const override { return inner_.hasNext(); }
    void next() override { inner_.next(); }
    counted_ptr<ZANFieldGroup>& current() override { return inner_.current(); }
    counted_ptr<ZANFieldGroup> const& current() const override {
        return static_cast<SubGroupIteratorImpl const&>(inner_).current();
    }

private:
    static counted_ptr<InstanceList> snapshotOf(GroupTable const& groups) {
        counted_ptr<InstanceList> all(new InstanceList);
        all->instances = allInstances(groups);
        return all;
    }

    SubGroupIteratorImpl inner_;
};

} // namespace zan

#endif
