/// A dictionary of groups in flat tables, for reading and writing many messages.
///
/// Threads: it does not change, and may be read from several threads.
#ifndef ZANENGINE_SERVER_WIRE_COMPILEDDICTIONARY_H
#define ZANENGINE_SERVER_WIRE_COMPILEDDICTIONARY_H

#include "server/sessions/GroupDictionary.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace zan::server {

/// A tag that means something at one place of a message: at its top level the count of a group, in
/// an instance a member.
struct PlacedTag {
    static constexpr int noGroup = -1;

    int tag = 0;
    /// Where a member stands in its instance; the delimiter has 0.
    int position = 0;
    /// Which group the tag counts, or `noGroup`.
    int group = noGroup;
};

/// The tags that mean something at one place, found in a step or two.
class PlacedTags {
public:
    PlacedTags() = default;
    explicit PlacedTags(std::vector<PlacedTag> const& tags);

    /// Null for a tag that means nothing here.
    PlacedTag const* find(int tag) const {
        for (std::size_t at = hash(tag);; ++at) {
            PlacedTag const& slot = slots_[at & mask_];
            if (slot.tag == tag) {
                return &slot;
            }
            if (slot.tag == 0) {
                return nullptr;
            }
        }
    }

private:
    // Multiplied by the golden ratio: the high bits depend on all bits of the tag.
    static std::size_t hash(int tag) {
        return (static_cast<std::uint32_t>(tag) * 2654435769U) >> 16;
    }

    std::vector<PlacedTag> slots_ = std::vector<PlacedTag>(1);
    std::size_t mask_ = 0;
};

/// How the instances of a group are made.
struct CompiledGroup {
    int countTag = 0;
    int delimiter = 0;
    PlacedTags members;
};

/// The groups at the top level of the messages of a type, those of the header included.
struct TypeGroups {
    PlacedTags counts;
    /// The members of all these groups, at any depth. Behind an instance a reader takes them for
    /// its own.
    PlacedTags members;
};

class CompiledDictionary {
public:
    explicit CompiledDictionary(GroupDictionary const& dictionary);

    std::string const& beginString() const { return beginString_; }

    TypeGroups const& groupsOf(std::string_view type) const;

    /// The group that a placed tag counts.
    CompiledGroup const& group(PlacedTag const& count) const {
        return groups_[static_cast<std::size_t>(count.group)];
    }

private:
    TypeGroups compile(MessageGroups const& groups, MessageGroups const& header);
    int compile(int countTag, GroupRule const& rule);

    std::string beginString_;
    std::vector<CompiledGroup> groups_;
    TypeGroups header_;
    std::vector<std::pair<std::string, TypeGroups>> types_;
    /// Where the types of one letter stand in `types_`, and nowhere: behind the last.
    std::array<std::uint16_t, 128> byLetter_;
};

} // namespace zan::server

#endif
