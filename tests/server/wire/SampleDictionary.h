/// A dictionary for the tests: orders (type D) with parties, whose instances hold sub-parties, and
/// with allocations; hops in the header.
#ifndef ZANENGINE_TESTS_SERVER_WIRE_SAMPLEDICTIONARY_H
#define ZANENGINE_TESTS_SERVER_WIRE_SAMPLEDICTIONARY_H

#include "server/wire/CompiledDictionary.h"

inline zan::server::CompiledDictionary sampleDictionary() {
    zan::server::GroupRule const subParties{523, {523, 803}, {}};
    zan::server::GroupRule const parties{448, {448, 447, 452, 802}, {{802, subParties}}};
    zan::server::GroupRule const allocations{79, {79, 80, 360, 361}, {}};
    zan::server::GroupRule const hops{628, {628, 629}, {}};
    return zan::server::CompiledDictionary(
        {"FIX.4.4", {{"D", {{453, parties}, {78, allocations}}}}, {{627, hops}}});
}

#endif
