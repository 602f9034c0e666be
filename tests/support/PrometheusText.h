/// Reads Prometheus's text format strictly.
#ifndef ZANENGINE_TESTS_SUPPORT_PROMETHEUSTEXT_H
#define ZANENGINE_TESTS_SUPPORT_PROMETHEUSTEXT_H

#include "support/Pattern.h"

#include <cmath>
#include <limits>
#include <map>
#include <sstream>
#include <stdexcept>
#include <string>

/// The samples of a scrape, by name and labels as they stand there: `name{a="b"}`.
///
/// Throws std::runtime_error with the line for a text that is not well-formed: a family whose
/// samples do not stand together below its HELP and TYPE, a series that comes twice, a counter
/// whose name does not end in `_total`, a histogram whose buckets fall or do not end in +Inf ...
class PrometheusText {
public:
    explicit PrometheusText(std::string const& text) {
        if (text.empty() || text.back() != '\n') {
            throw std::runtime_error("the text does not end with a line end");
        }
        std::istringstream lines(text);
        for (line_.clear(); std::getline(lines, line_);) {
            readLine();
        }
        checkHistograms();
    }

    bool has(std::string const& series) const { return samples_.count(series) > 0; }

    /// Throws when the series is not there.
    double operator[](std::string const& series) const {
        auto const found = samples_.find(series);
        if (found == samples_.end()) {
            throw std::runtime_error("there is no " + series);
        }
        return found->second;
    }

    /// The type of each family.
    std::map<std::string, std::string> const& families() const { return families_; }

    /// How many series of a family there are.
    int seriesOf(std::string const& family) const {
        int count = 0;
        for (auto const& sample : samples_) {
            count += sample.first.rfind(family + "{", 0) == 0 || sample.first == family ? 1 : 0;
        }
        return count;
    }

private:
    [[noreturn]] void fail(std::string const& reason) const {
        throw std::runtime_error(reason + ": " + line_);
    }

    void readLine() {
        static Pattern const help("# HELP ([a-z_]+) (.+)");
        static Pattern const type("# TYPE ([a-z_]+) (counter|gauge|histogram)");
        static Pattern const sample(
            R"rx(([a-z_]+)((?:\{[a-z_]+="(?:[^"\\\n]|\\[\\"n])*"(?:,[a-z_]+="(?:[^"\\\n]|\\[\\"n])*")*\})?) (\S+))rx");
        if (auto const helped = help.groupsOf(line_); !helped.empty()) {
            helped_ = helped[1];
        } else if (auto const typed = type.groupsOf(line_); !typed.empty()) {
            beginFamily(typed[1], typed[2]);
        } else if (auto const parts = sample.groupsOf(line_); !parts.empty()) {
            addSample(parts[1], parts[2], parts[3]);
        } else {
            fail("neither a comment nor a sample");
        }
    }

    void beginFamily(std::string const& name, std::string const& type) {
        bool const isNamedTotal = name.size() > 6 && name.substr(name.size() - 6) == "_total";
        if (name != helped_) {
            fail("no HELP before it");
        }
        if ((type == "counter") != isNamedTotal) {
            fail("counters, and nothing else, end in _total");
        }
        if (!families_.emplace(name, type).second) {
            fail("comes twice");
        }
        family_ = name;
    }

    void addSample(std::string const& name, std::string const& labels, std::string const& number) {
        bool const isHistogram = !family_.empty() && families_[family_] == "histogram";
        bool const isPart = isHistogram && (name == family_ + "_bucket" ||
                                            name == family_ + "_sum" || name == family_ + "_count");
        if (isHistogram ? !isPart : name != family_) {
            fail("does not belong to the family above it");
        }
        std::size_t read = 0;
        double const value = std::stod(number, &read);
        if (read != number.size() || std::isnan(value) || value < 0) {
            fail("a number from 0 on would be right");
        }
        if (!samples_.emplace(name + labels, value).second) {
            fail("comes twice");
        }
        if (isPart && name == family_ + "_bucket") {
            addBucket(labels, value);
        }
    }

    void addBucket(std::string const& labels, double value) {
        static Pattern const last(R"rx((.*),le="([^"]+)"\})rx");
        auto const parts = last.groupsOf(labels);
        if (parts.empty()) {
            fail("a bucket needs le as its last label");
        }
        double const bound = std::stod(parts[2]);
        auto& buckets = buckets_[{family_, parts[1] + "}"}];
        if (!buckets.empty() &&
            (buckets.rbegin()->first >= bound || buckets.rbegin()->second > value)) {
            fail("the buckets do not rise");
        }
        buckets[bound] = value;
    }

    void checkHistograms() const {
        for (auto const& [series, buckets] : buckets_) {
            auto const last = buckets.rbegin();
            if (last->first != std::numeric_limits<double>::infinity() ||
                last->second != (*this)[series.first + "_count" + series.second] ||
                !has(series.first + "_sum" + series.second)) {
                throw std::runtime_error("the histogram " + series.first + " does not add up");
            }
        }
    }

    std::string line_;
    std::string helped_;
    std::string family_;
    std::map<std::string, std::string> families_;
    std::map<std::string, double> samples_;
    std::map<std::pair<std::string, std::string>, std::map<double, double>> buckets_;
};

#endif
