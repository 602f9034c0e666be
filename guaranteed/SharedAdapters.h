/// How many guaranteed listeners have an adapter: one and its copies.
///
/// Threads: any.
#ifndef ZANENGINE_GUARANTEED_SHAREDADAPTERS_H
#define ZANENGINE_GUARANTEED_SHAREDADAPTERS_H

#include <cstddef>

class ZANGMLAdapter;

namespace zan {

/// Null is never counted. `add` throws `std::bad_alloc` for the first listener of an adapter alone.
class SharedAdapters {
public:
    static void add(ZANGMLAdapter const* adapter);
    static void remove(ZANGMLAdapter const* adapter) noexcept;
    static std::size_t count(ZANGMLAdapter const* adapter) noexcept;
};

} // namespace zan

#endif
