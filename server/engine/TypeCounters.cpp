#include "server/engine/TypeCounters.h"

#include <algorithm>

namespace zan::server {

namespace {

constexpr std::size_t longestType = sizeof(std::uint32_t);

bool isPartOfType(char c) {
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

// The type's characters as one number; 0 for what cannot have a count of its own.
std::uint32_t keyOf(std::string_view type) {
    std::uint32_t key = 0;
    if (type.size() <= longestType && std::ranges::all_of(type, isPartOfType)) {
        for (char const c : type) {
            key = (key << 8) | static_cast<unsigned char>(c);
        }
    }
    return key;
}

std::string typeOf(std::uint32_t key) {
    std::string type;
    for (; key != 0; key >>= 8) {
        type.insert(type.begin(), static_cast<char>(key & 0xff));
    }
    return type;
}

} // namespace

TypeCounters::TypeCounters() {
    slots_[0].key = keyOf("3");
    slots_[1].key = keyOf("j");
}

void TypeCounters::count(std::string_view type) {
    std::uint32_t const key = keyOf(type);
    Slot* const slot = key == 0 ? nullptr : slotFor(key);
    (slot ? slot->count : others_).fetch_add(1, std::memory_order_relaxed);
}

// The type's own slot, or a free one that becomes its own; null when all belong to other types.
TypeCounters::Slot* TypeCounters::slotFor(std::uint32_t key) {
    for (Slot& slot : slots_) {
        std::uint32_t owner = slot.key.load(std::memory_order_relaxed);
        if (owner == 0) {
            slot.key.compare_exchange_strong(owner, key, std::memory_order_relaxed);
            owner = slot.key.load(std::memory_order_relaxed);
        }
        if (owner == key) {
            return &slot;
        }
    }
    return nullptr;
}

std::vector<TypeCount> TypeCounters::counts() const {
    std::vector<TypeCount> counts;
    for (Slot const& slot : slots_) {
        std::uint32_t const key = slot.key.load(std::memory_order_relaxed);
        if (key != 0) {
            counts.push_back({typeOf(key), slot.count.load(std::memory_order_relaxed)});
        }
    }
    if (std::uint64_t const count = others_.load(std::memory_order_relaxed); count != 0) {
        counts.push_back({std::string(others), count});
    }
    return counts;
}

} // namespace zan::server
