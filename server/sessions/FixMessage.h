/// The fields of a FIX message in the plain form in which sessions take them.
#ifndef ZANENGINE_SERVER_SESSIONS_FIXMESSAGE_H
#define ZANENGINE_SERVER_SESSIONS_FIXMESSAGE_H

#include "server/sessions/StandardTags.h"

#include <string>
#include <utility>
#include <vector>

namespace zan {
namespace server {

/// One `tag=value` of a message.
struct FixField {
    FixField(int itsTag, std::string itsValue)
        : FixField(itsTag, std::move(itsValue), standardPlaceOf(itsTag)) {}
    FixField(int itsTag, std::string itsValue, TagPlace itsPlace)
        : tag(itsTag), place(itsPlace), value(std::move(itsValue)) {}

    int tag;
    TagPlace place; ///< where it goes, by the dictionary of the session
    std::string value;
};

/// The fields of a message in the order of the wire; the counts and the members of repeating
/// groups stand in the sequence like any other field.
using FixFields = std::vector<FixField>;

} // namespace server
} // namespace zan

#endif
