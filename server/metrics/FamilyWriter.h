/// Collects families of metrics and writes them as text.
///
/// Threads: one.
#ifndef ZANENGINE_SERVER_METRICS_FAMILYWRITER_H
#define ZANENGINE_SERVER_METRICS_FAMILYWRITER_H

#include "server/log/CommitTimes.h"

#include <prometheus/metric_family.h>

#include <string>
#include <utility>
#include <vector>

namespace zan::server {

enum class Kind { Counter, Gauge, Histogram };

class FamilyWriter {
public:
    /// Names and values, in the order in which they are written.
    using Labels = std::vector<std::pair<char const*, std::string>>;

    /// What is added from here on belongs to this family.
    void begin(char const* name, char const* help, Kind kind);

    void add(Labels const& labels, double value);
    void add(Labels const& labels, CommitFigures const& commits);

    /// Everything, in Prometheus's text format; a family without a metric is left out.
    std::string text() const;

private:
    prometheus::ClientMetric& addMetric(Labels const& labels);

    std::vector<prometheus::MetricFamily> families_;
};

} // namespace zan::server

#endif
