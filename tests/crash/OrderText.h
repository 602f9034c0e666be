/// The orders of the crash tests. What an order says follows from its client order id, so that
/// whoever finds one can tell whether it is whole.
#ifndef ZANENGINE_TESTS_CRASH_ORDERTEXT_H
#define ZANENGINE_TESTS_CRASH_ORDERTEXT_H

#include <cstddef>
#include <functional>
#include <string>

namespace crash {

/// The fields of the order after its type, in the order in which they are sent, with `|`.
inline std::string orderFields(std::string const& clientOrderId) {
    std::size_t const number = std::hash<std::string>()(clientOrderId);
    std::string text =
        "11=" + clientOrderId + "|55=SYM" + std::to_string(number % 97) +
        "|54=" + std::to_string(1 + number % 2) + "|38=" + std::to_string(1 + number % 1000) +
        "|40=2|44=" + std::to_string(10 + number % 90) + ".25|60=20261121-09:30:00|58=";
    // Short texts and long ones, so that rows end anywhere in a page.
    text += std::string(1 + number % 7 * number % 400, static_cast<char>('a' + number % 26));
    return text + "|";
}

/// What is posted, and what of it is deleted again after it was edited.
inline std::string postName(std::string const& run, int number) {
    return "P-" + run + "-" + std::to_string(number);
}

inline bool isToBeRemoved(int number) {
    return number % 3 == 2;
}

inline bool isToBeRemoved(std::string const& postName) {
    return isToBeRemoved(std::stoi(postName.substr(postName.rfind('-') + 1)));
}

} // namespace crash

#endif
