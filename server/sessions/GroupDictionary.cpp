#include "server/sessions/GroupDictionary.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <set>
#include <sstream>
#include <stdexcept>

#include <quickfix/DataDictionary.h>

namespace zan {
namespace server {

namespace {

// The message type under which QuickFIX keeps the groups of the header.
char const* const headerType = "_header_";

// QuickFIX answers questions about a dictionary but lists nothing: the types are looked up in the
// text, and every tag up to the highest number that stands in it is asked for.
std::set<std::string> valuesOf(std::string const& xml, std::string const& attribute) {
    std::set<std::string> values;
    std::string const beginning = attribute + "=";
    for (std::size_t at = xml.find(beginning); at != std::string::npos;
         at = xml.find(beginning, at + 1)) {
        std::size_t const start = at + beginning.size() + 1;
        if (start > xml.size())
            break;
        std::size_t const end = xml.find(xml[start - 1], start);
        if (end != std::string::npos)
            values.insert(xml.substr(start, end - start));
    }
    return values;
}

std::vector<int> tagsIn(std::string const& xml, FIX::DataDictionary const& dictionary) {
    std::vector<int> tags;
    for (std::string const& number : valuesOf(xml, "number")) {
        int tag = 0;
        if (std::istringstream(number) >> tag && dictionary.isField(tag))
            tags.push_back(tag);
    }
    return tags;
}

MessageGroups groupsOf(std::string const& type, FIX::DataDictionary const& dictionary,
                       std::vector<int> const& tags) {
    MessageGroups groups;
    for (int const tag : tags) {
        int delimiter = 0;
        FIX::DataDictionary const* inside = nullptr;
        if (!dictionary.getGroup(type, tag, delimiter, inside))
            continue;
        GroupRule& rule = groups[tag];
        rule.delimiter = delimiter;
        std::copy_if(tags.begin(), tags.end(), std::back_inserter(rule.members),
                     [inside](int member) { return inside->isField(member); });
        std::sort(rule.members.begin(), rule.members.end(), inside->getOrderedFields());
        rule.nested = groupsOf(type, *inside, tags);
    }
    return groups;
}

} // namespace

GroupDictionary parseGroups(std::string const& xml, std::string const& name) {
    try {
        std::istringstream stream(xml);
        // Its constructor would leak what it has read when it throws.
        FIX::DataDictionary dictionary;
        dictionary.readFromStream(stream);
        std::vector<int> const tags = tagsIn(xml, dictionary);
        GroupDictionary result;
        result.beginString = dictionary.getVersion();
        result.header = groupsOf(headerType, dictionary, tags);
        for (std::string const& type : valuesOf(xml, "msgtype"))
            if (dictionary.isMsgType(type))
                result.messages[type] = groupsOf(type, dictionary, tags);
        return result;
    } catch (std::exception const& error) {
        throw std::runtime_error("cannot read the data dictionary " + name + ": " + error.what());
    }
}

GroupDictionary loadGroups(std::string const& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    if (!file || !(text << file.rdbuf()))
        throw std::runtime_error("cannot read the data dictionary " + path +
                                 ": the file cannot be read");
    return parseGroups(text.str(), path);
}

} // namespace server
} // namespace zan
