/// The range of sequence numbers, and how they are read from text.
///
/// Threads: constants and functions without shared state.
#ifndef ZANENGINE_SERVER_SESSIONS_SEQUENCENUMBERS_H
#define ZANENGINE_SERVER_SESSIONS_SEQUENCENUMBERS_H

#include <string>

namespace zan {
namespace server {

/// The largest number that a message may have, in or out. It leaves room to count and add beyond it
/// within an `int`, which QuickFIX and the log have for it.
constexpr int largestSequenceNumber = 2000000000;

/// The number that the text says in decimal digits; `largestSequenceNumber` + 1 for every one that
/// is larger, and 0 for text that is no number.
inline int sequenceNumberIn(std::string const& text) {
    int number = 0;
    for (char const each : text) {
        if (each < '0' || each > '9')
            return 0;
        if (number > largestSequenceNumber / 10)
            number = largestSequenceNumber + 1;
        else if (number <= largestSequenceNumber)
            number = number * 10 + (each - '0');
    }
    return number > largestSequenceNumber ? largestSequenceNumber + 1 : number;
}

} // namespace server
} // namespace zan

#endif
