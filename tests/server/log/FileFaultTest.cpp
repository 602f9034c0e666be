// Whatever call on a file fails, and wherever a process is killed: what was acknowledged is in the
// log, what was refused is not and does not come back, and nothing else is said of either.
#include "FileFaults.h"
#include "LogFixture.h"

#include <functional>
#include <set>
#include <string>
#include <vector>

#include <sys/wait.h>
#include <unistd.h>

namespace {

using namespace logtest;
using filefaults::Fault;
using filefaults::Plan;
using filefaults::Planned;

constexpr char const* unknown = "whether the log has it is known when";

/// What became of orders, by their text.
struct Outcome {
    std::set<std::string> acknowledged;
    std::set<std::string> refused;
    /// The caller was told that nobody knows.
    std::set<std::string> open;
};

std::string textOf(int number) {
    // Some fill more than a page.
    return "order-" + std::to_string(number) + (number % 3 == 0 ? std::string(6000, '.') : "");
}

void send(MessageLog& log, int number, Outcome& outcome) {
    std::string const text = textOf(number);
    try {
        Turn const turn(log);
        FixNumbers numbers = log.numbers();
        log.append(entry(FixStream::appOut, numbers.nextOut, "35=D|58=" + text + "|"));
        ++numbers.nextOut;
        log.setNumbers(numbers);
        log.commit();
        outcome.acknowledged.insert(text);
    } catch (LogFailure const& failure) {
        bool const isOpen = std::string(failure.what()).find(unknown) != std::string::npos;
        (isOpen ? outcome.open : outcome.refused).insert(text);
    }
}

template <class Work>
void attempt(Work const& work) {
    try {
        work();
    } catch (LogFailure const&) {
        return;
    }
}

/// Everything that writes into a log, once and again.
void useLog(MessageLog& log, Outcome& outcome) {
    send(log, 1, outcome);
    attempt([&] { log.update(-1, "note = 'seen'", "seq = 1", "ann"); });
    send(log, 3, outcome);
    log.setMark("desk", FixStream::appOut, 1);
    attempt([&] { log.flushMarks(); });
    log.maintain();
    send(log, 4, outcome);
    attempt([&] { log.remove(-1, "seq = 1 AND stream = 4", "ann"); });
    log.maintain();
    send(log, 5, outcome);
    log.worksAgain();
    send(log, 6, outcome);
}

class FileFault : public testing::TestWithParam<bool> {
protected:
    LogSettings settings(TemporaryFolder const& folder) const {
        LogSettings settings;
        settings.file = folder.file();
        settings.survivesPowerFailure = GetParam();
        return settings;
    }

    /// A log with something in it, closed.
    void prepare(TemporaryFolder const& folder) const {
        MessageLog log(settings(folder));
        Outcome outcome;
        send(log, 0, outcome);
    }

    static std::set<std::string> textsIn(MessageLog& log) {
        std::set<std::string> texts;
        log.read({}, [&](FixEntry&& read) {
            std::size_t const at = read.text.find("order-");
            EXPECT_TRUE(texts.insert(read.text.substr(at, read.text.size() - at - 1)).second);
        });
        EXPECT_EQ(log.numbers().nextOut, static_cast<int>(texts.size()) + 1);
        return texts;
    }

    static void expectFits(std::set<std::string> const& texts, Outcome const& outcome) {
        for (std::string const& each : outcome.acknowledged) {
            EXPECT_TRUE(texts.contains(each)) << each.substr(0, 10) << " is lost";
        }
        for (std::string const& each : outcome.refused) {
            EXPECT_FALSE(texts.contains(each)) << each.substr(0, 10) << " was refused";
        }
    }

    /// What the next process finds after a kill.
    void expectFitsAfterAKill(TemporaryFolder const& folder, Outcome const& outcome) const {
        TemporaryFolder const copy;
        std::filesystem::copy(folder.path(), copy.path(),
                              std::filesystem::copy_options::recursive |
                                  std::filesystem::copy_options::overwrite_existing);
        MessageLog log(settings(copy));
        expectFits(textsIn(log), outcome);
    }

    /// True when there was a call for the plan.
    bool survives(Plan const& plan) const {
        TemporaryFolder const folder;
        prepare(folder);
        Outcome outcome;
        MessageLog log(settings(folder));
        {
            Planned const planned(folder.path(), plan);
            useLog(log, outcome);
            if (!planned.wasHit()) {
                return false;
            }
            // The image is made while the disk is still as it is.
        }
        expectFitsAfterAKill(folder, outcome);
        send(log, 7, outcome);
        EXPECT_TRUE(outcome.acknowledged.contains(textOf(7)));
        expectFits(textsIn(log), outcome);
        expectFitsAfterAKill(folder, outcome);
        return true;
    }

    void expectSurvivesEach(Plan plan) const {
        int hits = 0;
        for (plan.at = 1; survives(plan); ++plan.at) {
            ++hits;
            ASSERT_FALSE(HasFailure()) << testing::PrintToString(plan);
        }
        EXPECT_GT(hits, GetParam() || !plan.syncsOnly ? 3 : 0);
    }
};

TEST_P(FileFault, OfAnyCallOnceLosesNothingAndBringsNothingBack) {
    expectSurvivesEach({});
}

TEST_P(FileFault, OfAllCallsFromOneOnLosesNothingAndBringsNothingBack) {
    Plan plan;
    plan.stays = true;
    expectSurvivesEach(plan);
}

TEST_P(FileFault, OfAFullDiskLosesNothingAndBringsNothingBack) {
    Plan plan;
    plan.error = ENOSPC;
    plan.stays = true;
    plan.fault = Fault::Short;
    expectSurvivesEach(plan);
}

// As a disk does that has written, and could not say so.
TEST_P(FileFault, OfACallThatDidItsWorkBringsNothingBack) {
    Plan plan;
    plan.fault = Fault::Late;
    expectSurvivesEach(plan);
}

TEST_P(FileFault, OfASyncOnceLosesNothingAndBringsNothingBack) {
    Plan plan;
    plan.syncsOnly = true;
    expectSurvivesEach(plan);
}

TEST_P(FileFault, OfEverySyncEndsTheUseOfTheLogUntilItWorksAgain) {
    TemporaryFolder const folder;
    prepare(folder);
    MessageLog log(settings(folder));
    Outcome outcome;
    {
        Plan plan;
        plan.at = 1;
        plan.syncsOnly = plan.stays = true;
        Planned const planned(folder.path(), plan);
        for (int i = 1; i < 5; ++i) {
            send(log, i, outcome);
        }
    }
    if (GetParam()) {
        EXPECT_EQ(outcome.acknowledged.size(), 0u);
        EXPECT_EQ(outcome.open.size(), 1u);
        EXPECT_EQ(outcome.refused.size(), 3u);
    }
    send(log, 7, outcome);
    EXPECT_TRUE(outcome.acknowledged.contains(textOf(7)));
    expectFits(textsIn(log), outcome);
    expectFitsAfterAKill(folder, outcome);
}

TEST_P(FileFault, OfAnyCallWhileItIsOpenedLeavesTheLogAsItIs) {
    bool wasHit = true;
    for (int at = 1; wasHit; ++at) {
        TemporaryFolder const folder;
        Outcome outcome;
        TemporaryFolder const image;
        {
            MessageLog log(settings(folder));
            send(log, 0, outcome);
            send(log, 3, outcome);
            std::filesystem::copy(folder.path(), image.path());
        }
        {
            Plan plan;
            plan.at = at;
            Planned const planned(image.path(), plan);
            attempt([&] { MessageLog const log(settings(image)); });
            wasHit = planned.wasHit();
        }
        MessageLog log(settings(image));
        expectFits(textsIn(log), outcome);
        ASSERT_FALSE(HasFailure()) << "call " << at;
    }
}

/// Runs in a process of its own, which tells what it was told in time.
class Killed : public FileFault {
protected:
    /// False when the process came to its end.
    bool survives(Plan const& plan) const {
        TemporaryFolder const folder;
        prepare(folder);
        int ends[2];
        EXPECT_EQ(pipe(ends), 0);
        pid_t const child = fork();
        if (child == 0) {
            work(folder, plan, ends[1]);
        }
        close(ends[1]);
        std::string told;
        char buffer[256];
        for (ssize_t size = 0; (size = ::read(ends[0], buffer, sizeof buffer)) > 0;) {
            told.append(buffer, static_cast<std::size_t>(size));
        }
        close(ends[0]);
        int status = 0;
        waitpid(child, &status, 0);
        EXPECT_TRUE(WIFEXITED(status));
        MessageLog log(settings(folder));
        std::set<std::string> const texts = textsIn(log);
        for (std::size_t at = 0; at + 1 < told.size(); at += 2) {
            EXPECT_TRUE(texts.contains(textOf(told[at] - '0'))) << told;
        }
        return told.find('!') == std::string::npos;
    }

private:
    [[noreturn]] void work(TemporaryFolder const& folder, Plan const& plan, int pipe) const {
        auto const tell = [pipe](std::string const& what) {
            if (::write(pipe, what.data(), what.size()) < 0) {
                _exit(1);
            }
        };
        {
            Planned const planned(folder.path(), plan);
            MessageLog log(settings(folder));
            for (int i = 1; i < 6; ++i) {
                Outcome outcome;
                send(log, i, outcome);
                tell(outcome.acknowledged.empty() ? "" : std::to_string(i) + ";");
                if (i == 3) {
                    log.update(-1, "note = 'seen'", "seq = 1", "ann");
                    usleep(110'000); // nothing is moved while others may be in a hurry
                    log.maintain();
                }
            }
        }
        tell("!");
        _exit(0);
    }
};

TEST_P(Killed, AtAnyCallLosesNothingAndRaisesNoAlarm) {
    int hits = 0;
    Plan plan;
    plan.fault = Fault::Killed;
    for (plan.at = 1; survives(plan); ++plan.at) {
        ++hits;
        ASSERT_FALSE(HasFailure()) << testing::PrintToString(plan);
    }
    EXPECT_GT(hits, 20);
}

TEST_P(Killed, WithinAnyCallLosesNothingAndRaisesNoAlarm) {
    int hits = 0;
    Plan plan;
    plan.fault = Fault::Torn;
    for (plan.at = 1; survives(plan); ++plan.at) {
        ++hits;
        ASSERT_FALSE(HasFailure()) << testing::PrintToString(plan);
    }
    EXPECT_GT(hits, 20);
}

std::string nameOf(testing::TestParamInfo<bool> const& info) {
    return info.param ? "Full" : "Normal";
}

INSTANTIATE_TEST_SUITE_P(Durability, FileFault, testing::Bool(), nameOf);
INSTANTIATE_TEST_SUITE_P(Durability, Killed, testing::Bool(), nameOf);

} // namespace
