#include "benchmarks/engine/CounterpartyProcess.h"
#include "benchmarks/engine/EngineSide.h"
#include "benchmarks/engine/Measure.h"
#include "benchmarks/engine/QuickFixSide.h"
#include "benchmarks/engine/Sections.h"

#include <condition_variable>
#include <mutex>
#include <stdexcept>
#include <vector>

namespace bench {

namespace {

/// Notes when a report arrives, and wakes the thread that waits for it.
class Arrival {
public:
    void arrive() {
        Clock::time_point const now = Clock::now();
        std::lock_guard const lock(mutex_);
        at_ = now;
        hasCome_ = true;
        came_.notify_one();
    }

    Clock::time_point wait() {
        std::unique_lock lock(mutex_);
        if (!came_.wait_for(lock, std::chrono::seconds(10), [this] { return hasCome_; })) {
            throw std::runtime_error("an order was not answered within ten seconds");
        }
        hasCome_ = false;
        return at_;
    }

private:
    std::mutex mutex_;
    std::condition_variable came_;
    Clock::time_point at_;
    bool hasCome_ = false;
};

/// One side with the times of its round trips, in microseconds.
struct Runner {
    std::string name;
    OrderSender& side;
    Arrival& arrival;
    std::vector<double> micros;

    void take(long roundTrips) {
        for (long i = 0; i < roundTrips; ++i) {
            std::string const id = "ORD-" + std::to_string(20261121000000 + i);
            Clock::time_point const start = Clock::now();
            side.send(id);
            std::chrono::duration<double, std::micro> const taken = arrival.wait() - start;
            micros.push_back(taken.count());
        }
    }
};

Row rowOf(std::string const& what, double part, Runner const& ours, Runner const& theirs) {
    double const value = quantile(ours.micros, part);
    double const peer = quantile(theirs.micros, part);
    Row row = {"order to report, " + what + " : QuickFIX with FileStore", amount(value, "µs"),
               amount(peer, "µs"), "", ""};
    requireAtMost(row, value / peer, 1);
    return row;
}

Row rowOf(Runner const& theirs) {
    return {theirs.name + ", median and p99", "",
            amount(median(theirs.micros), "µs") + ", " +
                amount(quantile(theirs.micros, 0.99), "µs"),
            "", ""};
}

} // namespace

Rows measureRoundTrip(Plan const& plan) {
    // In slices that take turns, too short for anybody to think that the other is idle. The first
    // of each is for warming up.
    constexpr long slices = 100;
    WorkFolder const folder(plan.folder);
    CounterpartyProcess forEngine("ENGINE", true);
    CounterpartyProcess forPlain("PLAIN", true);
    CounterpartyProcess forThreaded("THREADED", true);
    Arrival arrival;
    OnReport const onReport = [&arrival] { arrival.arrive(); };
    EngineSide engine(forEngine.port(), folder.path());
    engine.listen(onReport);
    QuickFixSide plain(Initiator::plain, "PLAIN", forPlain.port(), folder.path(), onReport);
    QuickFixSide threaded(Initiator::threaded, "THREADED", forThreaded.port(), folder.path(),
                          onReport);
    std::vector<Runner> runners = {{"the engine", engine, arrival, {}},
                                   {"QuickFIX, one thread for its sockets", plain, arrival, {}},
                                   {"QuickFIX, a thread for the session", threaded, arrival, {}}};
    for (long slice = 0; slice <= slices; ++slice) {
        for (Runner& runner : runners) {
            runner.take(plan.roundTrips / slices);
            if (slice == 0) {
                runner.micros.clear();
            }
        }
    }
    bool const isPlainBest = median(runners[1].micros) < median(runners[2].micros);
    Runner const& best = runners[isPlainBest ? 1 : 2];
    return {rowOf("median", 0.5, runners[0], best), rowOf("p99", 0.99, runners[0], best),
            rowOf(runners[1]), rowOf(runners[2])};
}

} // namespace bench
