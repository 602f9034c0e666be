/// The fields of a FIX message in the plain form in which sessions take them.
#ifndef ZANENGINE_SERVER_SESSIONS_FIXMESSAGE_H
#define ZANENGINE_SERVER_SESSIONS_FIXMESSAGE_H

#include <string>
#include <vector>

namespace zan {
namespace server {

/// One `tag=value` of a message.
struct FixField {
    int tag;
    std::string value;
};

/// The fields of a message in the order of the wire; the counts and the members of repeating
/// groups stand in the sequence like any other field.
using FixFields = std::vector<FixField>;

} // namespace server
} // namespace zan

#endif
