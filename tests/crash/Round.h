/// One round: a program under load is killed again and again, on one data folder and against one
/// counterparty that stays alive.
#ifndef ZANENGINE_TESTS_CRASH_ROUND_H
#define ZANENGINE_TESTS_CRASH_ROUND_H

#include "crash/Check.h"
#include "crash/Report.h"
#include "support/ChildProcess.h"

#include <optional>
#include <random>
#include <string>

namespace crash {

struct RoundSettings {
    int kills = 10;
    /// `normal` or `full`.
    std::string durability = "normal";
    unsigned seed = 1;
    /// The programs reset the sequence numbers now and then.
    bool resets = false;
};

class Round {
public:
    explicit Round(RoundSettings settings);
    Round(Round const&) = delete;
    Round& operator=(Round const&) = delete;
    ~Round();

    /// Once.
    Report run();

private:
    void startCounterparty();
    void writeSessionFile() const;
    void waitForDeadLinks();
    void kill(bool isEarly);
    void finish();
    void lookAtLog();
    Evidence evidence(std::string const& dataFolder) const;
    std::string url() const;
    void sleepUpTo(int millis, int least = 0);

    RoundSettings const settings_;
    std::mt19937 random_;
    std::string folder_;
    std::optional<ChildProcess> counterparty_;
    int runs_ = 0;
    int port_ = 0;
    std::size_t idleSockets_ = 0;
    Report report_;
};

} // namespace crash

#endif
