#include "server/log/RowChecksum.h"

#include <cstddef>

namespace zan::server {

namespace {

constexpr std::size_t wordSize = 8;

// The same on every machine, whatever order its bytes have.
std::uint64_t wordAt(char const* bytes, std::size_t size) {
    std::uint64_t word = 0;
    for (std::size_t at = 0; at < size; ++at) {
        word |= std::uint64_t{static_cast<unsigned char>(bytes[at])} << (8 * at);
    }
    return word;
}

} // namespace

void RowChecksum::add(std::int64_t number) {
    mix(static_cast<std::uint64_t>(number));
}

void RowChecksum::add(std::string_view bytes) {
    mix(bytes.size());
    while (bytes.size() >= wordSize) {
        mix(wordAt(bytes.data(), wordSize));
        bytes.remove_prefix(wordSize);
    }
    if (!bytes.empty()) {
        mix(wordAt(bytes.data(), bytes.size()));
    }
}

std::int64_t RowChecksum::value() const {
    return static_cast<std::int64_t>(state_ ^ state_ >> 29);
}

// Each step can be undone: a different word always leaves a different state.
void RowChecksum::mix(std::uint64_t word) {
    state_ = (state_ ^ word) * 0x9e3779b97f4a7c15;
    state_ ^= state_ >> 32;
}

} // namespace zan::server
