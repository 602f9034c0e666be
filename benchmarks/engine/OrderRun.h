/// Many orders in a row, sent in one way or another. The counterparty tells when the last has come.
#ifndef ZANENGINE_BENCHMARKS_ENGINE_ORDERRUN_H
#define ZANENGINE_BENCHMARKS_ENGINE_ORDERRUN_H

#include "benchmarks/engine/EngineSide.h"
#include "benchmarks/engine/OrderSender.h"

#include <string>

namespace bench {

/// How many messages a batch has, wherever one is sent.
inline constexpr long batchSize = 100;

class OrderRun {
public:
    explicit OrderRun(long count);

    long count() const { return count_; }

    /// ClOrdIDs of the orders 0 to count - 1.
    std::string id(long index) const;
    std::string lastId() const { return id(count_ - 1); }

    // Each sends the whole run.

    void sendAlone(OrderSender& side) const;
    /// The last order follows when all threads have sent theirs.
    void sendFromThreads(OrderSender& side, int threads) const;
    void sendBatches(EngineSide& side) const;

private:
    long const count_;
    std::string const lastId_;
};

} // namespace bench

#endif
