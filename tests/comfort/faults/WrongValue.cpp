// A number is a price, text is none.
#include "comfort/comfort.h"

void setNumber(zan::MessageBuilder& order);
void setNumber(zan::MessageBuilder& order) {
    order.set(zan::tag::Price, 95);
}

#ifdef WITH_FAULT
void setText(zan::MessageBuilder& order);
void setText(zan::MessageBuilder& order) {
    order.set(zan::tag::Price, "IBM");
}
#endif
