/// Dictionaries for tests, written as groups and turned into the XML that the engine reads.
#ifndef ZANENGINE_TESTS_SUPPORT_GROUPDICTIONARY_H
#define ZANENGINE_TESTS_SUPPORT_GROUPDICTIONARY_H

#include "server/wire/CompiledDictionary.h"

#include <map>
#include <set>
#include <string>
#include <vector>

/// One repeating group: the delimiter first among its members, nested groups by their counts.
struct GroupRule {
    int delimiter = 0;
    std::vector<int> members;
    std::map<int, GroupRule> nested;
};

using MessageGroups = std::map<int, GroupRule>;

struct GroupDictionary {
    std::map<std::string, MessageGroups> messages;
    MessageGroups header;

    /// FIX 4.4 in QuickFIX's XML format; the field of tag 55 is called F55.
    std::string xml() const {
        std::set<int> tags = {1};
        std::string text = "<fix type='FIX' major='4' minor='4'><header>";
        text += groupsText(header, tags) + "</header><trailer/><messages>";
        for (auto const& [type, groups] : messages) {
            text += "<message name='M" + type + "' msgtype='" + type + "' msgcat='app'>" +
                    groupsText(groups, tags) + "</message>";
        }
        text += "</messages><fields>";
        for (int const tag : tags) {
            text += "<field number='" + std::to_string(tag) + "' name='F" + std::to_string(tag) +
                    "' type='STRING'/>";
        }
        return text + "</fields></fix>";
    }

    zan::server::CompiledDictionary compiled() const {
        return zan::server::compileDictionary(xml(), "test");
    }

private:
    static std::string groupsText(MessageGroups const& groups, std::set<int>& tags) {
        std::string text;
        for (auto const& [count, rule] : groups) {
            text += groupText(count, rule, tags);
        }
        return text;
    }

    static std::string groupText(int count, GroupRule const& rule, std::set<int>& tags) {
        tags.insert(count);
        std::string text = "<group name='F" + std::to_string(count) + "' required='N'>";
        for (int const tag : rule.members) {
            tags.insert(tag);
            auto const nested = rule.nested.find(tag);
            text += nested != rule.nested.end()
                        ? groupText(tag, nested->second, tags)
                        : "<field name='F" + std::to_string(tag) + "' required='N'/>";
        }
        return text + "</group>";
    }
};

#endif
