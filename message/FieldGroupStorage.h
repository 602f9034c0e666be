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

/// The instances under one group tag, in the order in which they were added.
struct InstanceList : Pooled {
    std::vector<counted_ptr<ZANFieldGroup>, pool::Allocator<counted_ptr<ZANFieldGroup>>> instances;
};

using FieldTable = TagTable<counted_ptr<ZANField>>;

/// A tag has an entry exactly while its list holds an instance.
using GroupTable = TagTable<counted_ptr<InstanceList>>;

} // namespace zan

struct ZANFieldGroup::Storage : zan::Pooled {
    int groupTag = 0;
    zan::FieldTable fields;
    zan::GroupTable groups;
};

#endif
