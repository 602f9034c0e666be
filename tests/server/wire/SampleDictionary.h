/// A dictionary for the tests: orders (type D) with parties, whose instances hold sub-parties, and
/// with allocations; hops in the header.
#ifndef ZANENGINE_TESTS_SERVER_WIRE_SAMPLEDICTIONARY_H
#define ZANENGINE_TESTS_SERVER_WIRE_SAMPLEDICTIONARY_H

#include "server/wire/CompiledDictionary.h"
#include "support/GroupDictionary.h"

inline zan::server::CompiledDictionary sampleDictionary() {
    GroupRule const subParties{523, {523, 803}, {}};
    GroupRule const parties{448, {448, 447, 452, 802}, {{802, subParties}}};
    GroupRule const allocations{79, {79, 80, 360, 361}, {}};
    GroupRule const hops{628, {628, 629}, {}};
    return GroupDictionary{{{"D", {{453, parties}, {78, allocations}}}}, {{627, hops}}}.compiled();
}

#endif
