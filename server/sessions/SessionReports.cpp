#include "server/sessions/SessionReports.h"

#include <algorithm>

namespace zan {
namespace server {

void SessionReports::loggedOn(int heartbeatSeconds) {
    waiting_.push_back({Report::on, heartbeatSeconds, FixTrouble::session, std::string()});
    hasLogon_ = true;
}

void SessionReports::loggedOff() {
    waiting_.push_back({Report::off, 0, FixTrouble::session, std::string()});
}

void SessionReports::trouble(FixTrouble kind, std::string const& text) {
    waiting_.push_back({Report::problem, 0, kind, text});
}

// A report may make the session send, which delivers reports of its own.
void SessionReports::deliver() {
    if (waiting_.empty())
        return;
    std::vector<Report> reports;
    reports.swap(waiting_);
    hasLogon_ = false;
    for (Report const& report : reports)
        deliver(report);
}

void SessionReports::deliver(Report const& report) {
    switch (report.kind) {
    case Report::on:
        loggedOn_.store(true, std::memory_order_release);
        events_.loggedOn(report.heartbeatSeconds);
        break;
    case Report::off: // comes also for a logon that was never answered
        if (loggedOn_.exchange(false))
            events_.loggedOff();
        break;
    case Report::problem:
        events_.trouble(report.troubleKind, report.text);
        break;
    }
}

void SessionReports::fail(FixTrouble kind, std::string const& text) {
    bool const isOff = std::any_of(waiting_.begin(), waiting_.end(),
                                   [](Report const& report) { return report.kind == Report::off; });
    forget();
    events_.trouble(kind, text);
    if (isOff && loggedOn_.exchange(false))
        events_.loggedOff();
}

void SessionReports::forget() {
    waiting_.clear();
    hasLogon_ = false;
}

} // namespace server
} // namespace zan
