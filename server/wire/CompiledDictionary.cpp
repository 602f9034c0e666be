#include "server/wire/CompiledDictionary.h"

#include "server/wire/FieldText.h"

#include <algorithm>
#include <bit>
#include <limits>

namespace zan::server {

namespace {

constexpr auto nowhere = std::numeric_limits<std::uint16_t>::max();

// Where a nested group stands that the members do not list.
constexpr int last = std::numeric_limits<int>::max();

// A tag that a table knows stands there once: the first counts.
void add(std::vector<PlacedTag>& tags, PlacedTag const& tag) {
    if (std::ranges::find(tags, tag.tag, &PlacedTag::tag) == tags.end()) {
        tags.push_back(tag);
    }
}

// A data field is written with its length in front, so it stands where the length does.
void moveDataToLengths(std::vector<PlacedTag>& members) {
    for (PlacedTag& member : members) {
        auto const length = std::ranges::find(members, lengthTagOf(member.tag), &PlacedTag::tag);
        if (length != members.end()) {
            member.position = std::min(member.position, length->position);
        }
    }
}

void addMembers(std::vector<PlacedTag>& tags, MessageGroups const& groups) {
    for (auto const& group : groups) {
        for (int const tag : group.second.members) {
            if (tag > 0) {
                add(tags, {tag, 0, PlacedTag::noGroup});
            }
        }
        addMembers(tags, group.second.nested);
    }
}

} // namespace

PlacedTags::PlacedTags(std::vector<PlacedTag> const& tags)
    : slots_(std::bit_ceil(2 * tags.size() + 1)), mask_(slots_.size() - 1) {
    for (PlacedTag const& tag : tags) {
        std::size_t at = hash(tag.tag);
        while (slots_[at & mask_].tag != 0) {
            ++at;
        }
        slots_[at & mask_] = tag;
    }
}

CompiledDictionary::CompiledDictionary(GroupDictionary const& dictionary)
    : beginString_(dictionary.beginString), header_(compile({}, dictionary.header)) {
    byLetter_.fill(nowhere);
    for (auto const& [type, groups] : dictionary.messages) {
        if (type.size() == 1 && static_cast<unsigned char>(type[0]) < byLetter_.size()) {
            byLetter_[static_cast<unsigned char>(type[0])] =
                static_cast<std::uint16_t>(types_.size());
        }
        types_.emplace_back(type, compile(groups, dictionary.header));
    }
}

TypeGroups const& CompiledDictionary::groupsOf(std::string_view type) const {
    if (type.size() == 1 && static_cast<unsigned char>(type[0]) < byLetter_.size()) {
        auto const at = byLetter_[static_cast<unsigned char>(type[0])];
        return at == nowhere ? header_ : types_[at].second;
    }
    auto const found = std::ranges::lower_bound(
        types_, type, {}, [](auto const& entry) { return std::string_view(entry.first); });
    return found != types_.end() && found->first == type ? found->second : header_;
}

TypeGroups CompiledDictionary::compile(MessageGroups const& groups, MessageGroups const& header) {
    std::vector<PlacedTag> counts;
    std::vector<PlacedTag> members;
    for (MessageGroups const* const part : {&groups, &header}) {
        for (auto const& [countTag, rule] : *part) {
            if (countTag > 0) {
                add(counts, {countTag, 0, compile(countTag, rule)});
            }
        }
        addMembers(members, *part);
    }
    return {PlacedTags(counts), PlacedTags(members)};
}

int CompiledDictionary::compile(int countTag, GroupRule const& rule) {
    std::vector<PlacedTag> members;
    for (auto const& [nestedTag, nested] : rule.nested) {
        if (nestedTag > 0) {
            add(members, {nestedTag, last, compile(nestedTag, nested)});
        }
    }
    int position = 1;
    auto const place = [&](int tag) {
        if (tag > 0) {
            add(members, {tag, last, PlacedTag::noGroup});
            std::ranges::find(members, tag, &PlacedTag::tag)->position =
                tag == rule.delimiter ? 0 : position++;
        }
    };
    place(rule.delimiter);
    std::ranges::for_each(rule.members, place);
    moveDataToLengths(members);
    groups_.push_back({countTag, rule.delimiter, PlacedTags(members)});
    return static_cast<int>(groups_.size()) - 1;
}

} // namespace zan::server
