#include "server/wire/ModelWalk.h"

namespace zan::server {

bool Members::sortFrom(std::size_t first) {
    constexpr std::size_t few = 16;
    if (keys.size() - first > few) {
        std::sort(keys.begin() + static_cast<std::ptrdiff_t>(first), keys.end());
    } else {
        for (std::size_t i = first + 1; i < keys.size(); ++i) {
            Key const key = keys[i];
            std::size_t to = i;
            for (; to > first && key < keys[to - 1]; --to) {
                keys[to] = keys[to - 1];
            }
            keys[to] = key;
        }
    }
    return first < keys.size() && keys[first] >> 32 == 0;
}

bool InstanceLayout::learn(Entries const& entries, CompiledGroup const& rule) {
    size_ = 0;
    if (entries.size > most) {
        return false;
    }
    int positions[most];
    for (unsigned i = 0; i < entries.size; ++i) {
        PlacedTag const* const placed = rule.members.find(entries.tags[i]);
        if (!placed || placed->group != PlacedTag::noGroup || isLengthOrData(entries.tags[i]) ||
            !entries.pointers[i]) {
            return false;
        }
        unsigned to = i;
        for (; to > 0 && positions[to - 1] > placed->position; --to) {
            positions[to] = positions[to - 1];
            order_[to] = order_[to - 1];
        }
        positions[to] = placed->position;
        order_[to] = static_cast<std::uint8_t>(i);
        tags_[i] = entries.tags[i];
    }
    if (entries.size == 0 || positions[0] != 0) {
        return false;
    }
    size_ = entries.size;
    return true;
}

namespace refusal {

namespace {

std::string tagText(int tag) {
    return "tag " + std::to_string(tag);
}

} // namespace

void badTag(int tag) {
    throw MalformedMessage(tagText(tag) + ": a tag has to be a positive number");
}

void emptyValue(int tag) {
    throw MalformedMessage(tagText(tag) + " has an empty value");
}

void separatorInside(int tag) {
    throw MalformedMessage(tagText(tag) + " holds the separator (SOH) of fields in its value");
}

void wrongCount(int tag, std::string_view told, std::size_t instances) {
    throw MalformedMessage(tagText(tag) + " tells " + std::string(told) +
                           " instances of its group, but their number is " +
                           std::to_string(instances));
}

void dataMissing(int lengthTag, int dataTag) {
    throw MalformedMessage(tagText(lengthTag) + " tells the length of " + tagText(dataTag) +
                           ", which is missing");
}

void wrongLength(int lengthTag, std::string_view told, int dataTag, std::size_t length) {
    throw MalformedMessage(tagText(lengthTag) + " tells a length of " + std::string(told) +
                           ", but " + tagText(dataTag) + " has " + std::to_string(length) +
                           " characters");
}

void delimiterMissing(int delimiter, int groupTag) {
    throw MalformedMessage(tagText(delimiter) + " is missing in an instance of group " +
                           std::to_string(groupTag) + ", which has to begin with it");
}

void emptyInstance(int groupTag) {
    throw MalformedMessage(tagText(groupTag) + ": an instance of its group is an empty pointer");
}

void stranger(int tag, int groupTag, std::string_view type) {
    std::string place =
        groupTag == 0 ? "no such group in message type "
                      : "no such member of group " + std::to_string(groupTag) + " in message type ";
    throw MalformedMessage(tagText(tag) + ": the session's dictionary knows " + place.append(type) +
                           "; a DataDictionary that knows it would be right");
}

} // namespace refusal

} // namespace zan::server
