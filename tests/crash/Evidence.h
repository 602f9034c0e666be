/// What is left of a round of kills: the files that its programs wrote, and the message log.
///
/// Message texts have `|` in place of SOH here.
#ifndef ZANENGINE_TESTS_CRASH_EVIDENCE_H
#define ZANENGINE_TESTS_CRASH_EVIDENCE_H

#include <cstddef>
#include <set>
#include <string>
#include <vector>

namespace crash {

/// The value of the first field with this tag; empty when there is none.
std::string fieldOf(std::string const& message, int tag);

/// The sequence number of a message, 0 without one.
int numberOf(std::string const& message);

/// The fields of an order but for the session's, sorted.
std::vector<std::string> bodyOf(std::string const& message);

/// What the program wrote down after calls that had returned.
struct Acknowledged {
    struct One {
        long id;
        std::string order;
    };
    std::vector<One> ones;
    std::vector<std::vector<std::string>> batches;
    std::vector<One> posts; ///< `order` is the name
    std::set<long> edited;
    std::set<long> removed;
};

/// What the guaranteed listener wrote down in one run of the program.
struct Consumed {
    struct Event {
        long id;
        int stream;
        bool isAgain;
    };
    std::vector<Event> events;
    /// Marks that a flush has made durable.
    std::vector<Event> kept;
};

/// What the counterparty wrote down.
struct Journal {
    std::vector<std::string> raw;
    std::vector<std::string> taken;
    std::vector<std::string> sent;
    /// How many of these may be lost, because the numbers were reset after them.
    std::size_t forgotten = 0;
    bool isForgetting = false;
    bool isUnanswered = false;
    std::vector<std::string> logons;
    std::vector<std::string> events;
};

struct LogRow {
    long id;
    int stream;
    std::string type;
    int seq;
    std::string text;
    std::string note;
};

// These read what there is: a file that is missing is empty, and a last line that is not whole is
// left out.

Acknowledged readAcknowledged(std::string const& path);
Consumed readConsumed(std::string const& path);
Journal readJournal(std::string const& path);

/// The whole log of connection `C` by an engine of its own.
std::vector<LogRow> readLog(std::string const& sessionFile, std::string const& dataFolder);

} // namespace crash

#endif
