/// What is known about the repeating groups of FIX messages, free of any FIX library's types.
#ifndef ZANENGINE_SERVER_SESSIONS_GROUPDICTIONARY_H
#define ZANENGINE_SERVER_SESSIONS_GROUPDICTIONARY_H

#include <map>
#include <string>
#include <vector>

namespace zan {
namespace server {

/// One repeating group: how an instance begins, what it may hold and in which order.
struct GroupRule {
    /// The tag with which every instance begins.
    int delimiter = 0;
    /// Every member in the dictionary's order, the delimiter first; a member that is the count of
    /// a nested group has its rule in `nested`.
    std::vector<int> members;
    /// The groups inside an instance, by the tag of their count.
    std::map<int, GroupRule> nested;
};

/// The groups of one message type by the tag of their count.
using MessageGroups = std::map<int, GroupRule>;

/// The groups of a protocol version. A value: it can be copied, and read by several threads.
struct GroupDictionary {
    /// The version that the dictionary declares, for example `FIX.4.4`.
    std::string beginString;
    /// By message type (the value of tag 35). Types without groups may be missing.
    std::map<std::string, MessageGroups> messages;
    /// Groups that the header may hold, in every message.
    MessageGroups header;
};

/// Reads a dictionary in QuickFIX's XML format out of a file.
/// Throws std::runtime_error with the path and the reason when it cannot be read.
GroupDictionary loadGroups(std::string const& path);

/// The same from the XML text itself; `name` stands for the path in the text of an error.
GroupDictionary parseGroups(std::string const& xml, std::string const& name);

} // namespace server
} // namespace zan

#endif
