/// A short way into plain field groups for those who turn whole messages into text and back.
///
/// Threads: as for the group.
#ifndef ZANENGINE_MESSAGE_GROUPACCESS_H
#define ZANENGINE_MESSAGE_GROUPACCESS_H

#include "infra/Export.h"
#include "infra/Pool.h"
#include "infra/counted_ptr.h"
#include "message/FieldGroupStorage.h"
#include "message/ZANFieldGroup.h"

#include <span>
#include <string_view>
#include <typeinfo>

namespace zan {

/// A field as text; the value looks into the text that was read.
struct TextField {
    int tag = 0;
    std::string_view value;
};

struct GroupAccess {
    /// Whether the group is no object of a derived class, which may have overridden everything. All
    /// that follows is for plain groups only.
    static bool isPlain(ZANFieldGroup const& group) {
        return &typeid(group) == &typeid(ZANFieldGroup);
    }

    /// The fields and the sub-groups by ascending tag, as they are.
    static FieldTable const& fields(ZANFieldGroup const& group) { return group.storage_->fields; }
    static GroupTable const& groups(ZANFieldGroup const& group) { return group.storage_->groups; }
    static Contents& contents(ZANFieldGroup& group) { return *group.storage_; }

    static bool isPlain(ZANField const& field) { return &typeid(field) == &typeid(ZANField); }

    /// The value of a field: of a plain one without a call.
    static Value const& value(ZANField const& field) {
        return isPlain(field) ? field.value_ : field.getValue();
    }

    /// Whether a field is a plain one that has still the tag under which it is filed.
    static bool isAsFiled(ZANField const& field, int tag) {
        return isPlain(field) && field.tag_ == tag;
    }

    /// A new field and its control block. Both blocks are taken before either is written to: the
    /// second one is found sooner.
    template <class... Arguments>
    [[gnu::always_inline]] static counted_ptr<ZANField> newField(Arguments const&... arguments) {
        void* const place = pool::allocate(sizeof(ZANField));
        void* count = nullptr;
        try {
            count = pool::allocate(sizeof(CountBlock));
            return counted_ptr<ZANField>(::new (place) ZANField(arguments...), count);
        } catch (...) {
            pool::release(place, sizeof(ZANField));
            if (count) {
                pool::release(count, sizeof(CountBlock));
            }
            throw;
        }
    }

    /// Gives a group without fields these, as strings, in any order; of fields with the same tag
    /// the last one counts. Returns the lowest tag that stands twice, or 0.
    ZAN_API static int fill(ZANFieldGroup& group, std::span<TextField const> fields);
};

} // namespace zan

#endif
