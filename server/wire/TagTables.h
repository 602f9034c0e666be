/// Tables by tag that are built once and read often.
///
/// Threads: they do not change, and may be read from several threads.
#ifndef ZANENGINE_SERVER_WIRE_TAGTABLES_H
#define ZANENGINE_SERVER_WIRE_TAGTABLES_H

#include <bit>
#include <cstddef>
#include <cstdint>
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

/// Entries with a tag, found in a step or two; no tag is 0.
template <class Entry>
class TagTable {
public:
    TagTable() = default;

    /// Of entries with different tags.
    explicit TagTable(std::vector<Entry> const& entries)
        : slots_(std::bit_ceil(2 * entries.size() + 1)), mask_(slots_.size() - 1) {
        for (Entry const& entry : entries) {
            std::size_t at = hash(entry.tag);
            while (slots_[at & mask_].tag != 0) {
                ++at;
            }
            slots_[at & mask_] = entry;
        }
    }

    /// Null for a tag that means nothing here.
    Entry const* find(int tag) const {
        for (std::size_t at = hash(tag);; ++at) {
            Entry const& slot = slots_[at & mask_];
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

    std::vector<Entry> slots_ = std::vector<Entry>(1);
    std::size_t mask_ = 0;
};

/// The tags that mean something at one place.
using PlacedTags = TagTable<PlacedTag>;

/// A set of tags.
struct LoneTag {
    int tag = 0;
};
using TagSet = TagTable<LoneTag>;

} // namespace zan::server

#endif
