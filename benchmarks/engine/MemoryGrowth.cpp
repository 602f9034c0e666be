#include "benchmarks/engine/CounterpartyProcess.h"
#include "benchmarks/engine/EngineSide.h"
#include "benchmarks/engine/Measure.h"
#include "benchmarks/engine/OrderRun.h"
#include "benchmarks/engine/QuickFixSide.h"
#include "benchmarks/engine/Sections.h"

#include <filesystem>

namespace bench {

namespace {

double sizeOf(std::string const& folder) {
    double bytes = 0;
    for (auto const& each : std::filesystem::recursive_directory_iterator(folder)) {
        bytes += each.is_regular_file() ? static_cast<double>(each.file_size()) : 0;
    }
    return bytes;
}

/// How the resident memory of QuickFIX alone grows, in MiB for a million orders: its store keeps
/// the place of each.
double growthOfQuickFix(Plan const& plan) {
    WorkFolder const folder(plan.folder);
    CounterpartyProcess peer("THREADED");
    QuickFixSide side(Initiator::threaded, "THREADED", peer.port(), folder.path(), nullptr);
    OrderRun const first(plan.ordersBeforeGrowth);
    first.sendAlone(side);
    peer.waitForLast(first.lastId(), first.count());
    double const before = residentMiB();
    OrderRun const second(plan.ordersBeforeGrowth);
    second.sendAlone(side);
    peer.waitForLast(second.lastId(), first.count() + second.count());
    return (residentMiB() - before) / static_cast<double>(second.count()) * 1e6;
}

} // namespace

Rows measureMemoryGrowth(Plan const& plan) {
    WorkFolder const folder(plan.folder);
    CounterpartyProcess peer("ENGINE");
    EngineSide engine(peer.port(), folder.path());
    OrderRun const first(plan.ordersBeforeGrowth);
    first.sendBatches(engine);
    peer.waitForLast(first.lastId(), first.count());
    double const before = residentMiB();
    OrderRun const rest(plan.ordersOfGrowth - plan.ordersBeforeGrowth);
    double const seconds = secondsOf([&] {
        rest.sendBatches(engine);
        peer.waitForLast(rest.lastId(), plan.ordersOfGrowth);
    });
    double const growth = residentMiB() - before;
    auto const counted = static_cast<double>(rest.count());

    Row growing = {"growth of the memory from " + amount(double(first.count()), "") + " to " +
                       amount(double(plan.ordersOfGrowth), "") +
                       " orders : QuickFIX with FileStore, for as many",
                   amount(growth, "MiB"), amount(growthOfQuickFix(plan) * counted / 1e6, "MiB"), "",
                   ""};
    requireAmount(growing, growth, plan.allowedGrowthMiB, "MiB");
    return {growing,
            {"resident memory after these orders", amount(before + growth, "MiB"), "", "", ""},
            {"rate over all of these orders", amount(counted / seconds, "orders/s"), "", "", ""},
            {"size of the log, an order",
             amount(sizeOf(folder.path()) / static_cast<double>(plan.ordersOfGrowth), "bytes"), "",
             "", ""}};
}

} // namespace bench
