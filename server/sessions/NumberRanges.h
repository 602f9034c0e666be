/// A set of sequence numbers, as ranges that do not touch.
#ifndef ZANENGINE_SERVER_SESSIONS_NUMBERRANGES_H
#define ZANENGINE_SERVER_SESSIONS_NUMBERRANGES_H

#include <cstddef>
#include <map>

namespace zan {
namespace server {

/// From the first to the last, both included.
struct NumberRange {
    int first;
    int last;
};

/// Holds no more than `mostRanges`: whoever adds more scattered ones fills the gap between the two
/// lowest. One thread at a time.
class NumberRanges {
public:
    static std::size_t const mostRanges = 64;

    void add(NumberRange range);
    void remove(NumberRange range);
    void clear() { ranges_.clear(); }

    bool isEmpty() const { return ranges_.empty(); }
    /// The lowest range; there has to be one.
    NumberRange front() const;
    bool has(int number) const;

private:
    std::map<int, int> ranges_; // from the first number to the last
};

} // namespace server
} // namespace zan

#endif
