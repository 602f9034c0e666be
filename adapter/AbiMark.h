/// `ZAN_ABI_MARK`: what a module and the library must agree on to share objects, as one readable
/// text. Each side writes it down when it is compiled; a module whose text differs is refused.
#ifndef ZANENGINE_ADAPTER_ABIMARK_H
#define ZANENGINE_ADAPTER_ABIMARK_H

#include <string> // the standard library's own configuration

#ifdef ZAN_ATOMIC_COUNTS
#define ZAN_ABI_COUNTS "atomic counts"
#else
#define ZAN_ABI_COUNTS "plain counts"
#endif

#if defined(_LIBCPP_VERSION)
#define ZAN_ABI_STRINGS "libc++ strings"
#elif defined(_GLIBCXX_USE_CXX11_ABI) && _GLIBCXX_USE_CXX11_ABI
#define ZAN_ABI_STRINGS "libstdc++ C++11 strings"
#else
#define ZAN_ABI_STRINGS "libstdc++ old strings"
#endif

// Checked containers have another layout.
#ifdef _GLIBCXX_DEBUG
#define ZAN_ABI_CONTAINERS ", debug containers"
#else
#define ZAN_ABI_CONTAINERS ""
#endif

#define ZAN_ABI_MARK "ZANEngine ABI 1, " ZAN_ABI_COUNTS ", " ZAN_ABI_STRINGS ZAN_ABI_CONTAINERS

#endif
