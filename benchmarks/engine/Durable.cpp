#include "benchmarks/engine/CounterpartyProcess.h"
#include "benchmarks/engine/EngineSide.h"
#include "benchmarks/engine/Measure.h"
#include "benchmarks/engine/OrderRun.h"
#include "benchmarks/engine/Sections.h"

namespace bench {

namespace {

constexpr int manyThreads = 8;

} // namespace

Rows measureDurable(Plan const& plan) {
    WorkFolder const folder(plan.folder);
    CounterpartyProcess peer("ENGINE");
    EngineSide engine(peer.port(), folder.path(), "full");
    Rows rows;
    long sent = 0;
    for (int const threads : {1, manyThreads}) {
        OrderRun const run(plan.durableOrders * threads);
        double const seconds = secondsOf([&] {
            run.sendFromThreads(engine, threads);
            peer.waitForLast(run.lastId(), sent += run.count());
        });
        std::string const name = threads == 1 ? "1 thread" : std::to_string(threads) + " threads";
        rows.push_back({"`Durability=full`, `sendMessage` from " + name,
                        amount(static_cast<double>(run.count()) / seconds, "orders/s"), "", "",
                        ""});
    }
    return rows;
}

} // namespace bench
