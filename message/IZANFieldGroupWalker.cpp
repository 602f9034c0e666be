#include "message/IZANFieldGroupWalker.h"

void IZANFieldGroupWalker::walkThrough(ZANFieldGroup const& group) {
    startGroup(group);
    for (auto groups = group.groupIterator(); groups->hasNext(); groups->next()) {
        walkThrough(*groups->current());
    }
    for (auto fields = group.fieldIterator(); fields->hasNext(); fields->next()) {
        processField(*fields->current(), group);
    }
    endGroup(group);
}
