/// Time, memory and what lies in the middle of many measurements.
#ifndef ZANENGINE_BENCHMARKS_ENGINE_MEASURE_H
#define ZANENGINE_BENCHMARKS_ENGINE_MEASURE_H

#include <chrono>
#include <cstddef>
#include <vector>

namespace bench {

using Clock = std::chrono::steady_clock;

template <class Work>
double secondsOf(Work const& work) {
    Clock::time_point const start = Clock::now();
    work();
    return std::chrono::duration<double>(Clock::now() - start).count();
}

/// The processor time of this process so far, all threads and the system's work for it.
double processorSeconds();

/// The value below which this part of the values lies; 0.5 gives the median. 0 without values.
double quantile(std::vector<double> values, double part);
double median(std::vector<double> const& values);

/// The element-wise ratios' median: what was taken together is compared.
double medianRatio(std::vector<double> const& ours, std::vector<double> const& theirs);

/// The resident memory of this process, in MiB.
double residentMiB();

/// What the heap has given out, in MiB.
double heapMiB();

/// How far the resident memory rises during `work`, in MiB.
template <class Work>
double peakOf(Work const& work);

/// Gives back what the heap holds for later, and begins to note the highest memory anew.
void beginPeak();
double peakMiB();

template <class Work>
double peakOf(Work const& work) {
    beginPeak();
    double const before = residentMiB();
    work();
    return peakMiB() - before;
}

} // namespace bench

#endif
