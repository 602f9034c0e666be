#include "message/IZANFieldGroupWalker.h"

void IZANFieldGroupWalker::walkThrough(ZANFieldGroup const& group) {
    startGroup(group);
    for (auto groups = group.groupIterator(); groups->hasNext(); groups->next()) {
        if (counted_ptr<ZANFieldGroup> const inner = groups->current()) {
            walkThrough(*inner);
        }
    }
    for (auto fields = group.fieldIterator(); fields->hasNext(); fields->next()) {
        // Held, as the callback may take the field out of the group.
        if (counted_ptr<ZANField> const field = fields->current()) {
            processField(*field, group);
        }
    }
    endGroup(group);
}
