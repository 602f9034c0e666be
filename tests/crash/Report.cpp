#include "crash/Report.h"

#include <cstddef>
#include <iomanip>
#include <sstream>

namespace crash {

namespace {

constexpr std::size_t mostCases = 20;
constexpr int labelWidth = 52;

struct Line {
    char const* label;
    long Report::*count;
};

constexpr Line lines[] = {
    {"kills", &Report::kills},
    {"  of these before the program had logged on", &Report::early},
    {"looks at the log right after a kill", &Report::underLog},
    {"orders acknowledged", &Report::acknowledged},
    {"  found in the log, once and whole", &Report::acknowledgedInLog},
    {"  found at the counterparty, once and whole", &Report::acknowledgedAtPeer},
    {"orders in the log", &Report::orders},
    {"  taken by the counterparty", &Report::ordersAtPeer},
    {"  sent to it again, as possible duplicates", &Report::repeatedOnWire},
    {"  sent to it again by the application", &Report::sentAgain},
    {"reports of the counterparty", &Report::reports},
    {"  found in the log, once and whole", &Report::reportsInLog},
    {"posts acknowledged, all in the log", &Report::posts},
    {"edits and deletions acknowledged, all in the log", &Report::edits},
    {"logons", &Report::logons},
    {"  of these with a reset of the numbers", &Report::resets},
    {"entries for the guaranteed listener", &Report::events},
    {"  consumed by it", &Report::consumed},
    {"  delivered again after a kill", &Report::redelivered},
};

} // namespace

void Report::fault(std::string const& kind, std::string const& detail) {
    ++wrong[kind];
    if (cases.size() < mostCases) {
        cases.push_back(kind + ": " + detail);
    }
}

void Report::add(Report const& other) {
    for (Line const& line : lines) {
        this->*line.count += other.*line.count;
    }
    for (auto const& [kind, count] : other.wrong) {
        wrong[kind] += count;
    }
    for (std::string const& each : other.cases) {
        if (cases.size() < mostCases) {
            cases.push_back(each);
        }
    }
}

std::string Report::table() const {
    std::ostringstream text;
    auto const put = [&](std::string const& label, long count) {
        text << std::left << std::setw(labelWidth) << label << std::right << std::setw(10) << count
             << '\n';
    };
    for (Line const& line : lines) {
        put(line.label, this->*line.count);
    }
    text << (isGood() ? "nothing was lost, doubled or out of step\n" : "WRONG:\n");
    for (auto const& [kind, count] : wrong) {
        put("  " + kind, count);
    }
    for (std::string const& each : cases) {
        text << "  - " << each << '\n';
    }
    return text.str();
}

} // namespace crash
