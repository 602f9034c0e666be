/// What a fuzzer demands of what it feeds.
#ifndef ZANENGINE_FUZZ_DEMAND_H
#define ZANENGINE_FUZZ_DEMAND_H

#include <cstdio>
#include <cstdlib>

/// Ends the process, so that the input is kept, when a property does not hold.
inline void demand(bool holds, char const* property) {
    if (!holds) {
        std::fprintf(stderr, "This does not hold: %s\n", property);
        std::abort();
    }
}

#endif
