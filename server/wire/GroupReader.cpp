#include "server/wire/GroupReader.h"

#include <algorithm>
#include <charconv>
#include <string>

namespace zan::server {

namespace {

std::string tagText(int tag) {
    return "tag " + std::to_string(tag);
}

class GroupReader {
public:
    GroupReader(std::string_view text, char separator, Reading reading,
                GroupDictionary const& dictionary)
        : cursor_(text, separator, reading), header_(dictionary.header),
          isStrict_(reading == Reading::Strict) {
        findType(FieldCursor(text, separator, reading));
        auto const found = dictionary.messages.find(type_);
        body_ = found == dictionary.messages.end() ? nullptr : &found->second;
    }

    counted_ptr<ZANFieldGroup> read() {
        counted_ptr<ZANFieldGroup> message(new ZANFieldGroup(0));
        advance();
        while (hasField_) {
            if (GroupRule const* rule = groupOf(tag())) {
                readGroup(*message, *rule);
            } else {
                readField(*message);
            }
        }
        return message;
    }

private:
    // The type decides which groups there are, and text that people write may hold it anywhere.
    void findType(FieldCursor cursor) {
        while (cursor.next()) {
            if (cursor.field().tag == 35) {
                type_ = cursor.field().value;
                return;
            }
        }
        refuse("tag 35, the type of the message, is missing");
    }

    void advance() { hasField_ = cursor_.next(); }
    int tag() const { return cursor_.field().tag; }

    GroupRule const* groupOf(int countTag) const {
        for (MessageGroups const* groups : {body_, &header_}) {
            if (groups) {
                auto const found = groups->find(countTag);
                if (found != groups->end()) {
                    return &found->second;
                }
            }
        }
        return nullptr;
    }

    void readField(ZANFieldGroup& group) {
        if (isStrict_ && group.isFieldPresent(tag())) {
            refuseRepetition(group.getGroupTag());
        }
        Value value;
        value.setString(std::string(cursor_.field().value));
        group.addField(counted_ptr<ZANField>(new ZANField(tag(), Value::STRING, value)));
        advance();
    }

    void readGroup(ZANFieldGroup& parent, GroupRule const& rule) {
        WireField const count = cursor_.field();
        if (parent.isGroupPresent(count.tag) || parent.isFieldPresent(count.tag)) {
            refuse(tagText(count.tag) + " counts the instances of a group, and stands twice");
        }
        advance();
        int instances = 0;
        for (; hasField_ && tag() == rule.delimiter; ++instances) {
            parent.addGroup(readInstance(count.tag, rule));
        }
        if (isStrict_) {
            checkCount(count, instances, rule);
        }
        if (instances == 0) {
            parent.setFieldValue(count.tag, std::string(count.value));
        }
    }

    counted_ptr<ZANFieldGroup> readInstance(int countTag, GroupRule const& rule) {
        counted_ptr<ZANFieldGroup> instance(new ZANFieldGroup(countTag));
        do {
            auto const nested = rule.nested.find(tag());
            if (nested != rule.nested.end()) {
                readGroup(*instance, nested->second);
            } else {
                readField(*instance);
            }
        } while (hasField_ && tag() != rule.delimiter && isMember(rule, tag()));
        return instance;
    }

    static bool isMember(GroupRule const& rule, int tag) {
        return std::ranges::find(rule.members, tag) != rule.members.end();
    }

    void checkCount(WireField const& count, int instances, GroupRule const& rule) const {
        int told = -1;
        char const* const end = count.value.data() + count.value.size();
        auto const [stop, error] = std::from_chars(count.value.data(), end, told);
        if (error != std::errc{} || stop != end || told < 0) {
            refuse(tagText(count.tag) +
                   " counts the instances of a group, so a number would be "
                   "right, not " +
                   std::string(count.value));
        }
        if (told != instances && hasField_ && isMember(rule, tag())) {
            refuse(tagText(tag()) + ": an instance of group " + std::to_string(count.tag) +
                   " has to begin with " + tagText(rule.delimiter));
        }
        if (told != instances) {
            refuse(tagText(count.tag) + " tells " + std::to_string(told) +
                   " instances of its group, but the number of those that follow is " +
                   std::to_string(instances));
        }
    }

    void refuseRepetition(int groupTag) const {
        if (groupTag != 0) {
            refuse(tagText(tag()) + " stands twice in one instance of group " +
                   std::to_string(groupTag));
        }
        refuse(tagText(tag()) +
               " stands twice, and the session's dictionary knows no group of message type " +
               type_ + " that holds it; a DataDictionary that knows the group would be right");
    }

    void refuse(std::string const& reason) const {
        if (isStrict_) {
            throw MalformedMessage(reason);
        }
    }

    FieldCursor cursor_;
    bool hasField_ = false;
    std::string type_;
    MessageGroups const& header_;
    MessageGroups const* body_ = nullptr;
    bool isStrict_;
};

} // namespace

counted_ptr<ZANFieldGroup> readMessage(std::string_view text, char separator, Reading reading,
                                       GroupDictionary const& dictionary) {
    return GroupReader(text, separator, reading, dictionary).read();
}

} // namespace zan::server
