// A function that takes an event is a listener, one that takes its text is none.
#include "comfort/listen.h"

counted_ptr<IZANEventListener> toEvents();
counted_ptr<IZANEventListener> toEvents() {
    return zan::listen([](ZANEvent const&) {});
}

#ifdef WITH_FAULT
counted_ptr<IZANEventListener> toText();
counted_ptr<IZANEventListener> toText() {
    return zan::listen([](std::string const&) {});
}
#endif
