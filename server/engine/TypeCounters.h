/// Counts messages by their type.
///
/// A counterparty may send any type, so only so many types have a count of their own; the rest
/// share one.
///
/// Threads: any. Counting takes no lock and waits for nobody.
#ifndef ZANENGINE_SERVER_ENGINE_TYPECOUNTERS_H
#define ZANENGINE_SERVER_ENGINE_TYPECOUNTERS_H

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace zan::server {

struct TypeCount {
    std::string type;
    std::uint64_t count = 0;
};

class TypeCounters {
public:
    static constexpr std::size_t mostTypes = 48;

    /// What the types without a count of their own are called. No message type is that long.
    static constexpr std::string_view others = "other";

    /// The rejects (3 and j) have a count from the beginning, whatever else comes.
    TypeCounters();

    /// A type that is longer than four characters, or has others than letters and digits, is
    /// counted with the others.
    void count(std::string_view type);

    /// In the order in which the types came first; the others last, where there are any.
    std::vector<TypeCount> counts() const;

private:
    struct Slot {
        std::atomic<std::uint32_t> key{0};
        std::atomic<std::uint64_t> count{0};
    };

    Slot* slotFor(std::uint32_t key);

    std::array<Slot, mostTypes> slots_;
    std::atomic<std::uint64_t> others_{0};
};

} // namespace zan::server

#endif
