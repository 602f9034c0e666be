/// What rounds of kills have shown: counts, and everything that was wrong.
#ifndef ZANENGINE_TESTS_CRASH_REPORT_H
#define ZANENGINE_TESTS_CRASH_REPORT_H

#include <map>
#include <string>
#include <vector>

namespace crash {

struct Report {
    long kills = 0;
    long early = 0;              ///< kills while the program opened the log or logged on
    long acknowledged = 0;       ///< orders whose call had returned
    long acknowledgedInLog = 0;  ///< of these
    long acknowledgedAtPeer = 0; ///< of these
    long orders = 0;             ///< orders in the log
    long ordersAtPeer = 0;       ///< orders that the counterparty's session has accepted
    long repeatedOnWire = 0;     ///< orders that came to the counterparty as PossDup
    long reports = 0;            ///< reports that the counterparty has sent
    long reportsInLog = 0;
    long events = 0;      ///< entries of the log that listeners have to get
    long consumed = 0;    ///< of these: the listener got them, at least once
    long redelivered = 0; ///< events that came again
    long posts = 0;       ///< messages for the listeners alone whose call had returned
    long edits = 0;       ///< edits and deletions of these whose call had returned
    long sentAgain = 0;   ///< orders that came to the counterparty as PossResend
    long logons = 0;      ///< that the counterparty has got
    long resets = 0;      ///< of these: the numbers began with 1
    long underLog = 0;    ///< looks at the log after a kill

    /// What must not be, and how often it was; each with its first cases.
    std::map<std::string, long> wrong;
    std::vector<std::string> cases;

    void fault(std::string const& kind, std::string const& detail);
    bool isGood() const { return wrong.empty(); }
    void add(Report const& other);
    std::string table() const;
};

} // namespace crash

#endif
