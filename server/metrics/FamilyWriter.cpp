#include "server/metrics/FamilyWriter.h"

#include <prometheus/text_serializer.h>

#include <chrono>
#include <limits>

namespace zan::server {

namespace {

prometheus::MetricType typeOf(Kind kind) {
    switch (kind) {
    case Kind::Counter:
        return prometheus::MetricType::Counter;
    case Kind::Gauge:
        return prometheus::MetricType::Gauge;
    case Kind::Histogram:
        break;
    }
    return prometheus::MetricType::Histogram;
}

// Names come from applications and may hold any bytes; the text has to be UTF-8.
std::string printable(std::string const& text) {
    constexpr char const* digits = "0123456789abcdef";
    std::string shown;
    for (char const c : text) {
        if (c >= ' ' && c <= '~') {
            shown += c;
        } else {
            auto const byte = static_cast<unsigned char>(c);
            shown.append({'%', digits[byte >> 4], digits[byte & 0xf]});
        }
    }
    return shown;
}

} // namespace

void FamilyWriter::begin(char const* name, char const* help, Kind kind) {
    families_.push_back({name, help, typeOf(kind), {}});
}

prometheus::ClientMetric& FamilyWriter::addMetric(Labels const& labels) {
    prometheus::ClientMetric& metric = families_.back().metric.emplace_back();
    for (auto const& [name, value] : labels) {
        metric.label.push_back({name, printable(value)});
    }
    return metric;
}

void FamilyWriter::add(Labels const& labels, double value) {
    prometheus::ClientMetric& metric = addMetric(labels);
    if (families_.back().type == prometheus::MetricType::Counter) {
        metric.counter.value = value;
    } else {
        metric.gauge.value = value;
    }
}

void FamilyWriter::add(Labels const& labels, CommitFigures const& commits) {
    prometheus::ClientMetric::Histogram& histogram = addMetric(labels).histogram;
    std::uint64_t count = 0;
    for (std::size_t i = 0; i < commits.counts.size(); ++i) {
        count += commits.counts[i];
        bool const isLast = i == CommitFigures::bounds.size();
        double const bound = isLast
                                 ? std::numeric_limits<double>::infinity()
                                 : std::chrono::duration<double>(CommitFigures::bounds[i]).count();
        histogram.bucket.push_back({count, bound});
    }
    histogram.sample_count = count;
    histogram.sample_sum = std::chrono::duration<double>(commits.total).count();
}

std::string FamilyWriter::text() const {
    std::vector<prometheus::MetricFamily> filled;
    for (prometheus::MetricFamily const& family : families_) {
        if (!family.metric.empty()) {
            filled.push_back(family);
        }
    }
    return prometheus::TextSerializer().Serialize(filled);
}

} // namespace zan::server
