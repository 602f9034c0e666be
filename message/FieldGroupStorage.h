/// What a field group holds, and the pooled containers that it is made of.
#ifndef ZANENGINE_MESSAGE_FIELDGROUPSTORAGE_H
#define ZANENGINE_MESSAGE_FIELDGROUPSTORAGE_H

#include "infra/Pool.h"
#include "infra/counted_ptr.h"
#include "message/TagTable.h"
#include "message/ZANField.h"
#include "message/ZANFieldGroup.h"

#include <cstddef>
#include <vector>

namespace zan {

/// Puts the objects of a class into the pool.
struct Pooled {
    static void* operator new(std::size_t size) { return pool::allocate(size); }
    static void operator delete(void* object, std::size_t size) noexcept {
        pool::release(object, size);
    }
};

using Instances =
    std::vector<counted_ptr<ZANFieldGroup>, pool::Allocator<counted_ptr<ZANFieldGroup>>>;

/// The instances under one group tag, in the order in which they were added.
struct InstanceList : Pooled {
    Instances instances;
    /// Lists that are taken apart form a chain.
    counted_ptr<InstanceList> next;
};

using FieldTable = TagTable<counted_ptr<ZANField>>;

/// A tag has an entry exactly while its list holds an instance.
using GroupTable = TagTable<counted_ptr<InstanceList>>;

/// All instances that are not null, by ascending group tag and then in their order.
Instances allInstances(GroupTable const& groups);

/// Fields and sub-groups. A destructor among them may look at the group that they belong to, change
/// it, or end it: what goes is put into contents of its own first, which nobody else sees.
struct Contents {
    FieldTable fields;
    GroupTable groups;

    Contents() = default;
    Contents(Contents const&) = delete;
    Contents& operator=(Contents const&) = delete;
    ~Contents() {
        if (!groups.empty()) {
            discardGroups();
        }
    }

    void swap(Contents& other) noexcept {
        fields.swap(other.fields);
        groups.swap(other.groups);
    }

    /// Lets go of the sub-groups and of theirs, not one inside the other: the depth of the nesting
    /// does not count.
    void discardGroups() noexcept;
};

} // namespace zan

struct ZANFieldGroup::Storage : zan::Pooled, zan::Contents {
    int groupTag = 0;

    ~Storage() {
        while (!fields.empty() || !groups.empty()) {
            if (!groups.empty()) {
                discardGroups();
            }
            fields.discard();
        }
    }
};

#endif
