/// The three iterators of a field group.
#ifndef ZANENGINE_MESSAGE_FIELDGROUPITERATORS_H
#define ZANENGINE_MESSAGE_FIELDGROUPITERATORS_H

#include "message/FieldGroupStorage.h"

#include <cstddef>

namespace zan {

/// Walks over the fields of a group as they are.
class FieldIteratorImpl final : public ZANFieldGroup::FieldIterator, public Pooled {
public:
    explicit FieldIteratorImpl(FieldTable const& fields) : cursor_(fields) {}

    bool hasNext() const override { return cursor_.hasNext(); }
    void next() override { cursor_.next(); }
    counted_ptr<ZANField>& current() override { return cursor_.pointer(); }
    counted_ptr<ZANField> const& current() const override { return cursor_.pointer(); }

private:
    FieldTable::Cursor cursor_;
};

/// Walks over the instances of one group tag as they are.
class SubGroupIteratorImpl final : public ZANFieldGroup::GroupIterator, public Pooled {
public:
    explicit SubGroupIteratorImpl(InstanceList& list) : list_(&list) {}

    bool hasNext() const override { return position_ < list_->instances.size(); }
    void next() override { ++position_; }
    counted_ptr<ZANFieldGroup>& current() override { return list_->instances[position_]; }
    counted_ptr<ZANFieldGroup> const& current() const override {
        return list_->instances[position_];
    }

private:
    InstanceList* list_;
    std::size_t position_ = 0;
};

/// Walks over every instance that a group had when the iterator was made, and holds them all.
class AllGroupIteratorImpl final : public ZANFieldGroup::GroupIterator, public Pooled {
public:
    explicit AllGroupIteratorImpl(GroupTable const& groups) : inner_(all_) {
        for (GroupTable::Cursor cursor(groups); cursor.hasNext(); cursor.next()) {
            for (auto const& instance : cursor.pointer()->instances) {
                if (instance) {
                    all_.instances.push_back(instance);
                }
            }
        }
    }

    bool hasNext() const override { return inner_.hasNext(); }
    void next() override { inner_.next(); }
    counted_ptr<ZANFieldGroup>& current() override { return inner_.current(); }
    counted_ptr<ZANFieldGroup> const& current() const override {
        return static_cast<SubGroupIteratorImpl const&>(inner_).current();
    }

private:
    InstanceList all_;
    SubGroupIteratorImpl inner_;
};

} // namespace zan

#endif
