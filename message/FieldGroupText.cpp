#include "message/FieldText.h"
#include "message/ZANFieldGroup.h"

namespace {

constexpr std::size_t indentStep = 4;

void print(std::ostream& os, ZANFieldGroup const& group, std::size_t indentation) {
    {
        zan::TextLine line(os);
        line.addBlanks(indentation).add("Start group tag = ").add(group.getGroupTag()).end();
        if (!group.isFieldsEmpty()) {
            for (auto const fields = group.fieldIterator(); fields->hasNext(); fields->next()) {
                if (counted_ptr<ZANField> const field = fields->current()) {
                    line.addBlanks(indentation + indentStep);
                    zan::addField(line, *field);
                    line.end();
                }
            }
        }
    }
    if (!group.isGroupsEmpty()) {
        for (auto const groups = group.groupIterator(); groups->hasNext(); groups->next()) {
            if (counted_ptr<ZANFieldGroup> const inner = groups->current()) {
                print(os, *inner, indentation + indentStep);
            }
        }
    }
    zan::TextLine line(os);
    line.addBlanks(indentation).add("End group tag = ").add(group.getGroupTag()).end();
}

} // namespace

std::ostream& operator<<(std::ostream& os, ZANFieldGroup const& group) {
    print(os, group, 0);
    return os;
}
