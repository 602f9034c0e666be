#include "benchmarks/engine/Measure.h"

#include <algorithm>
#include <fstream>
#include <stdexcept>
#include <string>

#include <malloc.h>
#include <sys/resource.h>

namespace bench {

namespace {

constexpr double kibInMib = 1024;

double secondsIn(timeval const& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

double statusMiB(std::string const& name) {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with(name)) {
            return std::stod(line.substr(name.size())) / kibInMib;
        }
    }
    throw std::runtime_error("/proc/self/status does not tell " + name);
}

} // namespace

double processorSeconds() {
    rusage usage = {};
    getrusage(RUSAGE_SELF, &usage);
    return secondsIn(usage.ru_utime) + secondsIn(usage.ru_stime);
}

double quantile(std::vector<double> values, double part) {
    if (values.empty()) {
        return 0;
    }
    auto const index = static_cast<std::ptrdiff_t>(part * static_cast<double>(values.size() - 1));
    std::nth_element(values.begin(), values.begin() + index, values.end());
    return values[static_cast<std::size_t>(index)];
}

double median(std::vector<double> const& values) {
    return quantile(values, 0.5);
}

double medianRatio(std::vector<double> const& ours, std::vector<double> const& theirs) {
    std::vector<double> ratios;
    for (std::size_t i = 0; i < std::min(ours.size(), theirs.size()); ++i) {
        ratios.push_back(ours[i] / theirs[i]);
    }
    return median(ratios);
}

double residentMiB() {
    return statusMiB("VmRSS:");
}

double heapMiB() {
    auto const heap = mallinfo2();
    return static_cast<double>(heap.uordblks + heap.hblkhd) / kibInMib / kibInMib;
}

void beginPeak() {
    malloc_trim(0);
    std::ofstream("/proc/self/clear_refs") << "5";
}

double peakMiB() {
    return statusMiB("VmHWM:");
}

} // namespace bench
