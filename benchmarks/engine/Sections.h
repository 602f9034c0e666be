/// The measurements, each for a process of its own.
#ifndef ZANENGINE_BENCHMARKS_ENGINE_SECTIONS_H
#define ZANENGINE_BENCHMARKS_ENGINE_SECTIONS_H

#include "benchmarks/engine/Report.h"

#include <string>

namespace bench {

/// How much is measured.
struct Plan {
    std::string folder;      ///< where data folders are made, and removed again
    int repetitions;         ///< of what is interleaved
    long orders;             ///< one way, in each repetition
    long roundTrips;         ///< in all repetitions together
    long storedMessages;     ///< that queries choose from
    long retrievedMessages;  ///< at once
    long ordersBeforeGrowth; ///< sent until the memory is looked at first
    long ordersOfGrowth;     ///< sent until it is looked at last
    long durableOrders;      ///< from each thread
    double allowedGrowthMiB;
};

/// Orders one way, until the counterparty has them all: the engine with its log against QuickFIX
/// with its FileStore.
Rows measureOrderRate(Plan const& plan);

/// From an order to the report on it, at the counterparty's soonest.
Rows measureRoundTrip(Plan const& plan);

/// What is stored, found again.
Rows measureQueries(Plan const& plan);

/// The resident memory of an engine that goes on sending.
Rows measureMemoryGrowth(Plan const& plan);

/// Orders that survive a power failure.
Rows measureDurable(Plan const& plan);

} // namespace bench

#endif
