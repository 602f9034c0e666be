/// Messages in tests, which are written with `|` between the fields.
#ifndef ZANENGINE_TESTS_SUPPORT_WIRE_H
#define ZANENGINE_TESTS_SUPPORT_WIRE_H

#include <algorithm>
#include <string>

/// The text as it goes over the wire: `|` becomes SOH.
inline std::string onTheWire(std::string text) {
    std::replace(text.begin(), text.end(), '|', '\x01');
    return text;
}

#endif
