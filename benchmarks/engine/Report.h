/// What was found, as rows of a table.
#ifndef ZANENGINE_BENCHMARKS_ENGINE_REPORT_H
#define ZANENGINE_BENCHMARKS_ENGINE_REPORT_H

#include <functional>
#include <string>
#include <vector>

namespace bench {

struct Row {
    std::string work; ///< what was done, and after a colon what it is measured against
    std::string ours;
    std::string peer;
    std::string ratio;
    std::string must;
    /// How much of what is allowed was needed: the bound holds up to 1. Negative without a bound.
    double load = -1;
};

using Rows = std::vector<Row>;

/// A number with separators, and as many decimals as are worth reading, before a unit.
std::string amount(double value, std::string const& unit);

/// A ratio of ours to the peer's that has to be at least this, or at most this.
void requireAtLeast(Row& row, double ratio, double bound);
void requireAtMost(Row& row, double ratio, double bound);

/// An amount that has to be at most this.
void requireAmount(Row& row, double value, double bound, std::string const& unit);

/// Measures in a process of its own, so that no measurement sees the heap or the threads of another
/// one. To be called while this process has a single thread. Throws std::runtime_error when the
/// measurement fails.
Rows measureApart(std::function<Rows()> const& measure);

void printTable(Rows const& rows);

/// One line a row: its texts and its load, with tabs between them.
void printRecords(Rows const& rows);

} // namespace bench

#endif
