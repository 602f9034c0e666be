// Instances are added to a group; its count is not set.
#include "comfort/comfort.h"

void addParty(zan::MessageBuilder& order);
void addParty(zan::MessageBuilder& order) {
    order.add(zan::GroupBuilder(zan::tag::NoPartyIDs).set(zan::tag::PartyID, "DESK-7"));
}

#ifdef WITH_FAULT
void setCount(zan::MessageBuilder& order);
void setCount(zan::MessageBuilder& order) {
    order.set(zan::tag::NoPartyIDs, 1);
}
#endif
