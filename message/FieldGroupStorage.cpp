#include "message/FieldGroupStorage.h"

#include "message/GroupAccess.h"

#include <utility>

namespace zan {

namespace {

void chain(GroupTable& groups, counted_ptr<InstanceList>& pending) {
    GroupTable taken;
    taken.swap(groups);
    for (GroupTable::Cursor cursor(taken); cursor.hasNext(); cursor.next()) {
        auto& list = cursor.pointer();
        list->next = std::move(pending);
        pending = list;
    }
}

} // namespace

Instances allInstances(GroupTable const& groups) {
    Instances all;
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
                chain(GroupAccess::contents(*instance).groups, pending);
            }
            instance.reset();
        }
    }
}

} // namespace zan
