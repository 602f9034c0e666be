#include "benchmarks/engine/OrderRun.h"

#include <algorithm>
#include <atomic>
#include <thread>
#include <vector>

namespace bench {

namespace {

std::string nextLastId() {
    static std::atomic<long> runs{0};
    // Ends with a letter, so that no id is the beginning of another one.
    return "LAST-" + std::to_string(++runs) + "X";
}

} // namespace

OrderRun::OrderRun(long count) : count_(count), lastId_(nextLastId()) {}

std::string OrderRun::id(long index) const {
    return index + 1 < count_ ? "ORD-" + std::to_string(20261121000000 + index) : lastId_;
}

void OrderRun::sendAlone(OrderSender& side) const {
    for (long i = 0; i < count_; ++i) {
        side.send(id(i));
    }
}

void OrderRun::sendFromThreads(OrderSender& side, int threads) const {
    std::vector<std::thread> senders;
    for (int thread = 0; thread < threads; ++thread) {
        senders.emplace_back([&, thread] {
            for (long i = thread; i < count_ - 1; i += threads) {
                side.send(id(i));
            }
        });
    }
    for (std::thread& sender : senders) {
        sender.join();
    }
    side.send(lastId());
}

void OrderRun::sendBatches(EngineSide& side) const {
    Messages batch;
    for (long i = 0; i < count_; ++i) {
        batch.push_back(EngineSide::newOrder(id(i)));
        if (static_cast<long>(batch.size()) == batchSize || i + 1 == count_) {
            side.send(batch);
            batch.clear();
        }
    }
}

} // namespace bench
