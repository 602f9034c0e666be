#include "benchmarks/engine/CounterpartyProcess.h"
#include "benchmarks/engine/EngineSide.h"
#include "benchmarks/engine/Measure.h"
#include "benchmarks/engine/OrderRun.h"
#include "benchmarks/engine/QuickFixSide.h"
#include "benchmarks/engine/Sections.h"

#include <algorithm>
#include <functional>
#include <vector>

namespace bench {

namespace {

constexpr int threads = 4;
/// A counterparty, and how many orders it got.
struct Peer {
    explicit Peer(std::string const& other) : process(other) {}

    CounterpartyProcess process;
    long count = 0;
};

/// One way of sending, with what was measured of it in each repetition.
struct Contender {
    std::string name;
    Peer* peer;
    std::function<void(OrderRun const&)> send;
    std::vector<double> rates;
    std::vector<double> processorMicros;

    void take(long orders) {
        OrderRun const run(orders);
        double const before = processorSeconds();
        double const seconds = secondsOf([&] {
            send(run);
            peer->process.waitForLast(run.lastId(), peer->count += orders);
        });
        rates.push_back(static_cast<double>(orders) / seconds);
        processorMicros.push_back((processorSeconds() - before) / static_cast<double>(orders) *
                                  1e6);
    }
};

using Contenders = std::vector<Contender>;

Contenders oursOf(EngineSide& side, Peer& peer) {
    return {{"`sendMessage` from 1 thread",
             &peer,
             [&](OrderRun const& run) { run.sendAlone(side); },
             {},
             {}},
            {"`sendMessage` from 4 threads",
             &peer,
             [&](OrderRun const& run) { run.sendFromThreads(side, threads); },
             {},
             {}},
            {"`sendMultipleMessages` of 100",
             &peer,
             [&](OrderRun const& run) { run.sendBatches(side); },
             {},
             {}}};
}

void addTheirs(Contenders& contenders, std::string const& name, QuickFixSide& side, Peer& peer) {
    contenders.push_back(
        {name + ", 1 thread", &peer, [&](OrderRun const& run) { run.sendAlone(side); }, {}, {}});
    contenders.push_back({name + ", 4 threads",
                          &peer,
                          [&](OrderRun const& run) { run.sendFromThreads(side, threads); },
                          {},
                          {}});
}

Contender const& bestOf(Contenders const& contenders) {
    return *std::ranges::max_element(
        contenders, {}, [](Contender const& contender) { return median(contender.rates); });
}

std::string rateOf(Contender const& contender) {
    return amount(median(contender.rates), "orders/s");
}

Rows rowsOf(Contenders const& ours, Contenders const& theirs) {
    Contender const& best = bestOf(theirs);
    Contender const& bestOfOurs = bestOf(ours);
    Rows rows = {{"orders one way, the best of each : QuickFIX with FileStore", rateOf(bestOfOurs),
                  rateOf(best), "", ""}};
    requireAtLeast(rows.back(), medianRatio(bestOfOurs.rates, best.rates), 1);
    for (Contender const& each : ours) {
        double const ratio = medianRatio(each.rates, best.rates);
        rows.push_back(
            {each.name + " : best of QuickFIX", rateOf(each), rateOf(best), amount(ratio, ""), ""});
    }
    for (Contender const& each : theirs) {
        rows.push_back({each.name, "", rateOf(each), "", ""});
    }
    double const micros = median(bestOfOurs.processorMicros);
    double const theirMicros = median(best.processorMicros);
    rows.push_back({"processor time an order, the best of each", amount(micros, "µs"),
                    amount(theirMicros, "µs"), amount(micros / theirMicros, ""), ""});
    return rows;
}

} // namespace

Rows measureOrderRate(Plan const& plan) {
    WorkFolder const folder(plan.folder);
    Peer forEngine("ENGINE");
    Peer forPlain("PLAIN");
    Peer forThreaded("THREADED");
    EngineSide engine(forEngine.process.port(), folder.path());
    QuickFixSide plain(Initiator::plain, "PLAIN", forPlain.process.port(), folder.path(), nullptr);
    QuickFixSide threaded(Initiator::threaded, "THREADED", forThreaded.process.port(),
                          folder.path(), nullptr);
    Contenders ours = oursOf(engine, forEngine);
    Contenders theirs;
    addTheirs(theirs, "QuickFIX, one thread for its sockets", plain, forPlain);
    addTheirs(theirs, "QuickFIX, a thread for the session", threaded, forThreaded);
    for (int i = 0; i < plan.repetitions; ++i) {
        for (std::size_t each = 0; each < std::max(ours.size(), theirs.size()); ++each) {
            if (each < ours.size()) {
                ours[each].take(plan.orders);
            }
            if (each < theirs.size()) {
                theirs[each].take(plan.orders);
            }
        }
    }
    return rowsOf(ours, theirs);
}

} // namespace bench
