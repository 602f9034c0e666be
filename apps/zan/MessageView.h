/// A message field by field, with the names of tags and values and its groups.
///
/// Threads: functions without shared state but the names.
#ifndef ZANENGINE_APPS_ZAN_MESSAGEVIEW_H
#define ZANENGINE_APPS_ZAN_MESSAGEVIEW_H

#include "apps/zan/Names.h"
#include "apps/zan/Record.h"

#include <string>
#include <string_view>
#include <vector>

namespace zan::cli {

struct ViewedField {
    int tag = 0;
    std::string value;
    std::string name;    ///< of the tag; empty when nobody knows it
    std::string meaning; ///< of the value; empty when it speaks for itself
    int depth = 0;       ///< how many groups it stands in
    bool beginsInstance = false;
};

/// The fields of a message, separated by SOH, in their order. Values are bytes.
std::vector<ViewedField> viewFields(std::string_view message, Dictionary const& dictionary);

/// The same for programs: objects with tag, name, value, meaning and depth.
std::vector<Record> decodedFields(std::string_view message, Names& names);

/// The fields as lines for people, the fields of groups indented, below a line with the type.
std::string viewText(std::string_view message, Names& names, bool isColored);

} // namespace zan::cli

#endif
