#include "message/FieldGroupStorage.h"

#include "message/GroupAccess.h"

#include <utility>

namespace zan {

namespace {

void chain(GroupTable& groups, counted_ptr<InstanceList>& pending) {
    for (GroupTable::Cursor cursor(groups); cursor.hasNext(); cursor.next()) {
        auto list = std::move(cursor.pointer());
        list->next = std::move(pending);
        pending = std::move(list);
    }
    groups.discard();
}

} // namespace

Instances allInstances(GroupTable const& groups) {
    Instances all;
    std::size_t size = 0;
    for (GroupTable::Cursor cursor(groups); cursor.hasNext(); cursor.next()) {
        size += cursor.pointer()->instances.size();
    }
    all.reserve(size);
    for (GroupTable::Cursor cursor(groups); cursor.hasNext(); cursor.next()) {
        for (auto const& instance : cursor.pointer()->instances) {
            if (instance) {
                all.push_back(instance);
            }
        }
    }
    return all;
}

void Contents::discardGroups() noexcept {
    counted_ptr<InstanceList> pending;
    chain(groups, pending);
    while (pending) {
        counted_ptr<InstanceList> const list = std::move(pending);
        pending = std::move(list->next);
        // An iterator may hold the list, but not what was in it.
        Instances ending;
        ending.swap(list->instances);
        for (auto& instance : ending) {
            if (instance && instance.use_count() == 1 && GroupAccess::isPlain(*instance)) {
                auto& inner = GroupAccess::contents(*instance).groups;
                if (!inner.empty()) {
                    chain(inner, pending);
                }
            }
            instance.reset();
        }
    }
}

} // namespace zan
