/// The text form of a field, as the text forms of fields and groups both write it.
#ifndef ZANENGINE_MESSAGE_FIELDTEXT_H
#define ZANENGINE_MESSAGE_FIELDTEXT_H

#include "infra/TextLine.h"
#include "message/ZANField.h"

namespace zan {

inline void addField(TextLine& line, ZANField const& field) {
    // Two blanks after the first word: the first piece ends and the second begins with one.
    line.add("Field ").add(" tag = ").add(field.getTag());
    line.add(" type = ").add(field.getType()).add(" value = ").add(field.getValue());
}

} // namespace zan

#endif
