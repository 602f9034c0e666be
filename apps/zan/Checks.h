/// What `doctor` looks at, one check after the other, each with what to do about it.
///
/// Threads: one at a time.
#ifndef ZANENGINE_APPS_ZAN_CHECKS_H
#define ZANENGINE_APPS_ZAN_CHECKS_H

#include "apps/zan/Interrupt.h"
#include "apps/zan/Settings.h"

#include <functional>
#include <string>

namespace zan::cli {

enum class CheckResult { Good, Warning, Fault, Skipped };

struct Check {
    std::string name;
    CheckResult result = CheckResult::Good;
    std::string found;
    /// What to do; empty when there is nothing to do.
    std::string advice;
};

/// Gets each check as soon as it is done.
using CheckSink = std::function<void(Check const&)>;

/// Checks everything that the settings lead to; stops where nothing further can be looked at.
/// With `logsOn` every connection is logged on for it. Throws `Interruption`.
void runChecks(Settings const& settings, bool logsOn, Interrupt& interrupt, CheckSink const& sink);

} // namespace zan::cli

#endif
