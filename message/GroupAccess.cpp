#include "message/GroupAccess.h"

#include <algorithm>
#include <cstdint>
#include <utility>
#include <vector>

namespace zan {

namespace {

// Where a field stands, under its tag: sorted, the last of several with one tag comes last.
using Key = std::uint64_t;

constexpr Key keyOf(int tag, std::size_t position) {
    return static_cast<Key>(static_cast<std::uint32_t>(tag)) << 32 | position;
}

constexpr std::uint32_t tagOf(Key key) {
    return static_cast<std::uint32_t>(key >> 32);
}

// The fields of a message are nearly sorted: some of the header stand out of order.
void sortFew(Key* keys, std::span<TextField const> fields) {
    for (std::size_t i = 0; i < fields.size(); ++i) {
        Key const key = keyOf(fields[i].tag, i);
        std::size_t to = i;
        for (; to > 0 && keys[to - 1] > key; --to) {
            keys[to] = keys[to - 1];
        }
        keys[to] = key;
    }
}

std::vector<Key> sortMany(std::span<TextField const> fields) {
    std::vector<Key> keys(fields.size());
    for (std::size_t i = 0; i < fields.size(); ++i) {
        keys[i] = keyOf(fields[i].tag, i);
    }
    std::sort(keys.begin(), keys.end());
    return keys;
}

} // namespace

int GroupAccess::fill(ZANFieldGroup& group, std::span<TextField const> fields) {
    constexpr std::size_t few = 64;
    Key inPlace[few];
    std::vector<Key> many;
    Key const* keys = inPlace;
    if (fields.size() <= few) {
        sortFew(inPlace, fields);
    } else {
        many = sortMany(fields);
        keys = many.data();
    }
    FieldTable& table = group.storage_->fields;
    table.reserve(fields.size());
    int repeated = 0;
    for (std::size_t i = 0; i < fields.size(); ++i) {
        if (i + 1 < fields.size() && tagOf(keys[i]) == tagOf(keys[i + 1])) {
            repeated = repeated == 0 ? static_cast<int>(tagOf(keys[i])) : repeated;
            continue;
        }
        TextField const& field = fields[static_cast<std::uint32_t>(keys[i])];
        table.append(field.tag, newField(field.tag, std::in_place, field.value));
    }
    return repeated;
}

} // namespace zan
