/// Does the log hold what went over the wire?
#ifndef ZANENGINE_TESTS_CONVERSATIONS_LOGCHECK_H
#define ZANENGINE_TESTS_CONVERSATIONS_LOGCHECK_H

#include <string>
#include <vector>

namespace conversations {

/// Something that went over the wire, and what the log has to hold of it.
struct Exchange {
    enum class Kind { fromEngine, fromPeer, bytesFromPeer };
    Kind kind = Kind::fromEngine;
    std::string text;
    /// Where not, it is not in the log at all.
    bool isLogged = true;
    /// What the note beside it holds; empty: there is no note.
    std::string note;
};

/// Empty when each message is in the log exactly once, in its stream and with its note, the
/// engine's in the order in which they were sent; otherwise what is not so. The rows are id,
/// stream, text and note. Bytes that are no message may be in several rows, but each of them once.
std::string logDifference(std::vector<Exchange> const& exchanges,
                          std::vector<std::vector<std::string>> const& rows);

} // namespace conversations

#endif
