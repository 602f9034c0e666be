/// `callText`: a call and its arguments as one line of text, so that a test compares what was
/// called with what should have been called.
///
/// Texts are shown by their content, numbers and times by value; shared objects, tickets and
/// vectors by their address, because a call must get the very same ones.
#ifndef ZANENGINE_CONFORMANCE_CALLTEXT_H
#define ZANENGINE_CONFORMANCE_CALLTEXT_H

#include "infra/Time.h"
#include "infra/UserTicket.h"
#include "infra/counted_ptr.h"

#include <sstream>
#include <string>
#include <vector>

namespace zan::conformance {

namespace call_text {

inline std::string addressText(char const* what, void const* address) {
    std::ostringstream text;
    text << what << ' ' << address;
    return text.str();
}

inline std::string argumentText(bool value) {
    return value ? "true" : "false";
}
inline std::string argumentText(int value) {
    return std::to_string(value);
}
inline std::string argumentText(long value) {
    return std::to_string(value);
}
inline std::string argumentText(char const* value) {
    return '"' + std::string(value) + '"';
}
inline std::string argumentText(std::string const& value) {
    return '"' + value + '"';
}
inline std::string argumentText(infra::Time const& value) {
    return std::to_string(value.getMillis()) + " ms";
}
inline std::string argumentText(UserTicket const& value) {
    return addressText("ticket", &value);
}

template <class T>
std::string argumentText(counted_ptr<T> const& value) {
    return addressText("object", value.get());
}

template <class T>
std::string argumentText(std::vector<T> const& value) {
    return addressText("vector", &value);
}

} // namespace call_text

template <class... Arguments>
std::string callText(char const* operation, Arguments const&... arguments) {
    std::string list;
    ((list += (list.empty() ? "" : ", ") + call_text::argumentText(arguments)), ...);
    return std::string(operation) + '(' + list + ')';
}

} // namespace zan::conformance

#endif
