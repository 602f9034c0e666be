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
void sortFew(Key* keys, std::size_t count) {
    for (std::size_t i = 1; i < count; ++i) {
        Key const key = keys[i];
        std::size_t to = i;
        for (; to > 0 && keys[to - 1] > key; --to) {
            keys[to] = keys[to - 1];
        }
        keys[to] = key;
    }
}

} // namespace

int GroupAccess::fill(ZANFieldGroup& group, std::span<TextField const> fields) {
    constexpr std::size_t few = 64;
    Key inPlace[few];
    std::vector<Key> many;
    if (fields.size() > few) {
        many.resize(fields.size());
    }
    Key* const keys = many.empty() ? inPlace : many.data();
    for (std::size_t i = 0; i < fields.size(); ++i) {
        keys[i] = keyOf(fields[i].tag, i);
    }
    many.empty() ? sortFew(keys, fields.size()) : std::sort(keys, keys + fields.size());

    FieldTable& table = group.storage_->fields;
    table.reserve(fields.size());
    int repeated = 0;
    for (std::size_t i = 0; i < fields.size(); ++i) {
        if (i + 1 < fields.size() && tagOf(keys[i]) == tagOf(keys[i + 1])) {
            repeated = repeated == 0 ? static_cast<int>(tagOf(keys[i])) : repeated;
            continue;
        }
        TextField const& field = fields[static_cast<std::uint32_t>(keys[i])];
        table.append(field.tag,
                     counted_ptr<ZANField>(new ZANField(field.tag, std::in_place, field.value)));
    }
    return repeated;
}

} // namespace zan
