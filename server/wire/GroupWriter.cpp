#include "server/wire/GroupWriter.h"

#include "server/wire/FieldText.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace zan::server {

namespace {

using Groups = std::vector<counted_ptr<ZANFieldGroup>>;

std::string tagText(int tag) {
    return "tag " + std::to_string(tag);
}

class GroupWriter {
public:
    GroupWriter(std::string const& type, GroupDictionary const& dictionary)
        : type_(type), dictionary_(dictionary) {}

    FixFields write(ZANFieldGroup const& message) {
        std::vector<int> tags = fieldTags(message);
        std::ranges::copy(groupTags(message), std::back_inserter(tags));
        std::ranges::sort(tags);
        tags.erase(std::unique(tags.begin(), tags.end()), tags.end());
        for (int const tag : tags) {
            writeTag(message, tag, ruleFor(tag), 0);
        }
        return std::move(fields_);
    }

private:
    static std::vector<int> fieldTags(ZANFieldGroup const& group) {
        std::vector<int> tags;
        for (auto fields = group.fieldIterator(); fields->hasNext(); fields->next()) {
            tags.push_back(std::as_const(*fields).current()->getTag());
        }
        return tags;
    }

    static std::vector<int> groupTags(ZANFieldGroup const& group) {
        std::vector<int> tags;
        for (auto groups = group.groupIterator(); groups->hasNext(); groups->next()) {
            int const tag = std::as_const(*groups).current()->getGroupTag();
            if (tags.empty() || tags.back() != tag) {
                tags.push_back(tag);
            }
        }
        return tags;
    }

    GroupRule const* ruleFor(int countTag) const {
        auto const message = dictionary_.messages.find(type_);
        if (message != dictionary_.messages.end()) {
            if (GroupRule const* rule = find(message->second, countTag)) {
                return rule;
            }
        }
        return find(dictionary_.header, countTag);
    }

    static GroupRule const* find(MessageGroups const& groups, int countTag) {
        auto const found = groups.find(countTag);
        return found == groups.end() ? nullptr : &found->second;
    }

    // What stands under a tag: a field, or a group where `rule` knows it as one.
    void writeTag(ZANFieldGroup const& group, int tag, GroupRule const* rule, int groupTag) {
        if (tag <= 0) {
            throw MalformedMessage(tagText(tag) + ": a tag has to be a positive number");
        }
        counted_ptr<ZANField> const field = group.getField(tag);
        int const instances = group.getGroupCount(tag);
        if (!rule && instances > 0) {
            refuseStranger(tag, groupTag);
        }
        if (rule && field) {
            checkCount(tag, field->getValue().asString(), instances);
        }
        if (rule && instances > 0) {
            writeGroup(group, tag, *rule);
        } else if (field) {
            writeField(group, tag, field->getValue().asString());
        }
    }

    static void checkCount(int tag, std::string const& told, int instances) {
        if (told != std::to_string(instances)) {
            throw MalformedMessage(tagText(tag) + " tells " + told +
                                   " instances of its group, but their number is " +
                                   std::to_string(instances));
        }
    }

    void writeField(ZANFieldGroup const& group, int tag, std::string value) {
        if (value.empty()) {
            throw MalformedMessage(tagText(tag) + " has an empty value");
        }
        if (int const dataTag = dataTagOf(tag)) {
            checkLength(group, tag, dataTag, value);
            return;
        }
        if (int const lengthTag = lengthTagOf(tag)) {
            fields_.push_back({lengthTag, std::to_string(value.size())});
        } else if (value.find(fieldSeparator) != std::string::npos) {
            throw MalformedMessage(tagText(tag) +
                                   " holds the separator (SOH) of fields in its value");
        }
        fields_.push_back({tag, std::move(value)});
    }

    // The length is written with the data that it belongs to.
    static void checkLength(ZANFieldGroup const& group, int tag, int dataTag,
                            std::string const& told) {
        counted_ptr<ZANField> const data = group.getField(dataTag);
        if (!data) {
            throw MalformedMessage(tagText(tag) + " tells the length of " + tagText(dataTag) +
                                   ", which is missing");
        }
        std::size_t const length = data->getValue().asString().size();
        if (told != std::to_string(length)) {
            throw MalformedMessage(tagText(tag) + " tells a length of " + told + ", but " +
                                   tagText(dataTag) + " has " + std::to_string(length) +
                                   " characters");
        }
    }

    void writeGroup(ZANFieldGroup const& parent, int countTag, GroupRule const& rule) {
        int const count = parent.getGroupCount(countTag);
        fields_.push_back({countTag, std::to_string(count)});
        for (int i = 0; i < count; ++i) {
            writeInstance(*parent.getGroup(countTag, i), countTag, rule);
        }
    }

    void writeInstance(ZANFieldGroup const& instance, int countTag, GroupRule const& rule) {
        refuseStrangers(instance, countTag, rule);
        if (!instance.isFieldPresent(rule.delimiter) && !instance.isGroupPresent(rule.delimiter)) {
            throw MalformedMessage(tagText(rule.delimiter) +
                                   " is missing in an instance of group " +
                                   std::to_string(countTag) + ", which has to begin with it");
        }
        writeTag(instance, rule.delimiter, find(rule.nested, rule.delimiter), countTag);
        for (int const tag : rule.members) {
            if (tag != rule.delimiter) {
                writeTag(instance, tag, find(rule.nested, tag), countTag);
            }
        }
    }

    void refuseStrangers(ZANFieldGroup const& instance, int countTag, GroupRule const& rule) const {
        for (auto const& tags : {fieldTags(instance), groupTags(instance)}) {
            for (int const tag : tags) {
                if (std::ranges::find(rule.members, tag) == rule.members.end()) {
                    refuseStranger(tag, countTag);
                }
            }
        }
    }

    [[noreturn]] void refuseStranger(int tag, int groupTag) const {
        std::string const place = groupTag == 0
                                      ? "no such group in message type " + type_
                                      : "no such member of group " + std::to_string(groupTag) +
                                            " in message type " + type_;
        throw MalformedMessage(tagText(tag) + ": the session's dictionary knows " + place +
                               "; a DataDictionary that knows it would be right");
    }

    std::string const& type_;
    GroupDictionary const& dictionary_;
    FixFields fields_;
};

} // namespace

FixFields writeFields(ZANFieldGroup const& message, std::string const& type,
                      GroupDictionary const& dictionary) {
    return GroupWriter(type, dictionary).write(message);
}

} // namespace zan::server
