/// Compares what the programs of a round wrote down with the message log.
#ifndef ZANENGINE_TESTS_CRASH_CHECK_H
#define ZANENGINE_TESTS_CRASH_CHECK_H

#include "crash/Evidence.h"
#include "crash/Report.h"

#include <map>
#include <set>
#include <string>
#include <vector>

namespace crash {

struct Evidence {
    std::vector<LogRow> log;
    Journal journal;
    std::vector<Acknowledged> acknowledged;
    std::vector<Consumed> consumed;
    /// The programs reset the numbers.
    bool mayReset = false;
};

class Check {
public:
    /// Writes what is wrong into the report. The evidence outlives the check.
    Check(Evidence const& evidence, Report& report);

    /// What has to hold at any moment: nobody has seen what is not in the log.
    void afterKill();

    /// What has to hold when both sides had time to talk to the end; counts too.
    void atTheEnd();

private:
    using Rows = std::map<std::string, LogRow const*>;

    void indexLog();
    void checkNumbers();
    void checkBatches();
    void checkPosts();
    void checkPost(Acknowledged const& run, Acknowledged::One const& post, bool isLast);
    void checkOrder(std::string const& order, long id);
    void checkWire();
    void checkListeners();
    void checkOrderOfDelivery(Consumed const& run);
    void countOrders();
    void countReports();
    void countEvents();
    void countDisturbances();
    void checkSession();
    bool isOfDeadLink(std::string const& complaint) const;

    Evidence const& evidence_;
    Report& report_;
    Rows orders_;
    Rows reports_;
    Rows posts_;
    std::set<long> mayBeRemoved_;
    long numberingFirst_ = 0; ///< what was sent before it may not have come
    std::map<long, LogRow const*> byId_;
};

} // namespace crash

#endif
