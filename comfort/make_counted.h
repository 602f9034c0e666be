/// `make_counted`: makes an object and the `counted_ptr` that owns it in one step.
///
/// Threads: any.
#ifndef ZANENGINE_COMFORT_MAKE_COUNTED_H
#define ZANENGINE_COMFORT_MAKE_COUNTED_H

#include "infra/counted_ptr.h"

#include <type_traits>
#include <utility>

/// A new `Made`, held as a `T`: `make_counted<IZANEventListener, Reports>(out)`. With one type it
/// is held as what it is: `make_counted<ZANMessage>(body)`. The arguments go to the constructor,
/// whose exceptions pass; nothing is leaked by one.
template <class T, class Made = T, class... Arguments>
[[nodiscard]] counted_ptr<T> make_counted(Arguments&&... arguments) {
    static_assert(std::is_convertible_v<Made*, T*>, "the second type has to derive from the first");
    static_assert(std::is_same_v<T, Made> || std::has_virtual_destructor_v<T>,
                  "a counted_ptr<T> ends a derived object only by a virtual destructor of T");
    return counted_ptr<T>(new Made(std::forward<Arguments>(arguments)...));
}

namespace zan {
using ::make_counted;
}

#endif
