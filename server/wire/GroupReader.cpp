#include "server/wire/GroupReader.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <memory_resource>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace zan::server {

namespace {

std::string tagText(int tag) {
    return "tag " + std::to_string(tag);
}

class GroupReader {
public:
    GroupReader(std::string_view text, char separator, Reading reading,
                CompiledDictionary const& dictionary)
        : cursor_(text, separator, reading), dictionary_(dictionary),
          isStrict_(reading == Reading::Strict) {
        pending_.reserve(usualFields);
        findType(cursor_);
    }

    counted_ptr<ZANFieldGroup> read() {
        counted_ptr<ZANFieldGroup> message(new ZANFieldGroup(0));
        PlacedTags const& groups = dictionary_.groupsOf(type_).counts;
        advance();
        while (hasField_) {
            if (PlacedTag const* const count = groups.find(tag())) {
                readGroup(*message, 0, *count);
            } else {
                readField();
            }
        }
        close(*message, 0);
        return message;
    }

private:
    // The type decides which groups there are, and text that people write may hold it anywhere.
    void findType(FieldCursor cursor) {
        while (cursor.next()) {
            if (cursor.tag() == messageTypeTag) {
                type_ = cursor.value();
                return;
            }
        }
        refuse("tag 35, the type of the message, is missing");
    }

    void advance() { hasField_ = cursor_.next(); }
    int tag() const { return cursor_.tag(); }

    void readField() {
        pending_.push_back({cursor_.tag(), cursor_.value()});
        advance();
    }

    // The fields of `parent` that were read so far are those that are pending from `first` on.
    void readGroup(ZANFieldGroup& parent, std::size_t first, PlacedTag const& placed) {
        WireField const count = cursor_.field();
        CompiledGroup const& group = dictionary_.group(placed);
        if (isStrict_) {
            checkFirst(count.tag, parent, first);
        }
        advance();
        int instances = 0;
        for (; hasField_ && tag() == group.delimiter; ++instances) {
            parent.addGroup(readInstance(group));
        }
        if (isStrict_) {
            checkCount(count, instances, group);
        }
        if (instances == 0) {
            pending_.push_back(count);
        }
    }

    counted_ptr<ZANFieldGroup> readInstance(CompiledGroup const& group) {
        counted_ptr<ZANFieldGroup> instance(new ZANFieldGroup(group.countTag));
        std::size_t const first = pending_.size();
        PlacedTag const* member = group.members.find(tag());
        do {
            if (member && member->group != PlacedTag::noGroup) {
                readGroup(*instance, first, *member);
            } else {
                readField();
            }
            member = hasField_ && tag() != group.delimiter ? group.members.find(tag()) : nullptr;
        } while (member);
        close(*instance, first);
        return instance;
    }

    // All fields of a group go into it at once.
    void close(ZANFieldGroup& group, std::size_t first) {
        int const repeated = GroupAccess::fill(group, std::span(pending_).subspan(first));
        if (repeated != 0 && isStrict_) {
            refuseRepetition(repeated, group.getGroupTag());
        }
        pending_.resize(first);
    }

    void checkFirst(int countTag, ZANFieldGroup const& parent, std::size_t first) const {
        auto const fields = std::span(pending_).subspan(first);
        if (parent.isGroupPresent(countTag) ||
            std::ranges::find(fields, countTag, &WireField::tag) != fields.end()) {
            refuse(tagText(countTag) + " counts the instances of a group, and stands twice");
        }
    }

    void checkCount(WireField const& count, int instances, CompiledGroup const& group) const {
        int told = -1;
        char const* const end = count.value.data() + count.value.size();
        auto const [stop, error] = std::from_chars(count.value.data(), end, told);
        if (error != std::errc{} || stop != end || told < 0) {
            refuse(tagText(count.tag) +
                   " counts the instances of a group, so a number would be "
                   "right, not " +
                   std::string(count.value));
        }
        if (told != instances && hasField_ && group.members.find(tag())) {
            refuse(tagText(tag()) + ": an instance of group " + std::to_string(count.tag) +
                   " has to begin with " + tagText(group.delimiter));
        }
        if (told != instances) {
            refuse(tagText(count.tag) + " tells " + std::to_string(told) +
                   " instances of its group, but the number of those that follow is " +
                   std::to_string(instances));
        }
    }

    void refuseRepetition(int repeated, int groupTag) const {
        if (groupTag != 0) {
            refuse(tagText(repeated) + " stands twice in one instance of group " +
                   std::to_string(groupTag));
        }
        refuse(tagText(repeated) +
               " stands twice, and the session's dictionary knows no group of message type " +
               std::string(type_) +
               " that holds it; a DataDictionary that knows the group would be right");
    }

    void refuse(std::string const& reason) const {
        if (isStrict_) {
            throw MalformedMessage(reason);
        }
    }

    static constexpr std::size_t usualFields = 128;

    FieldCursor cursor_;
    CompiledDictionary const& dictionary_;
    bool hasField_ = false;
    bool isStrict_;
    std::string_view type_;
    // The fields of all groups that are open, the innermost ones last.
    alignas(WireField) std::array<std::byte, usualFields * sizeof(WireField)> place_;
    std::pmr::monotonic_buffer_resource resource_{place_.data(), place_.size()};
    std::pmr::vector<WireField> pending_{&resource_};
};

} // namespace

counted_ptr<ZANFieldGroup> readMessage(std::string_view text, char separator, Reading reading,
                                       CompiledDictionary const& dictionary) {
    return GroupReader(text, separator, reading, dictionary).read();
}

} // namespace zan::server
