#include "benchmarks/engine/CounterpartyProcess.h"
#include "benchmarks/engine/EngineSide.h"
#include "benchmarks/engine/Measure.h"
#include "benchmarks/engine/OrderRun.h"
#include "benchmarks/engine/Sections.h"

#include "infra/Time.h"
#include "message/ZANFieldGroup.h"

#include <cmath>
#include <cstdint>
#include <stdexcept>
#include <thread>
#include <utility>
#include <vector>

namespace bench {

namespace {

constexpr long hits = 1000;
constexpr double mostMillis = 50;
constexpr int repetitions = 9;

// One order in a thousand is for the symbol that is looked for. One message in a thousand belongs
// to the order whose chain is looked for: it is replaced now and then, and filled in many parts.
constexpr long rareness = 1000;
constexpr long fillsOfAReplacement = 100;

std::string chainId(long replacement) {
    return "CHAIN-" + std::to_string(replacement);
}

counted_ptr<ZANMessage> chainMessage(long position) {
    long const replacement = position / fillsOfAReplacement;
    counted_ptr<ZANMessage> message = EngineSide::newOrder(chainId(replacement));
    ZANFieldGroup& fields = *message->getFieldGroup();
    if (position % fillsOfAReplacement != 0) {
        fields.setFieldValue(35, "8");
        fields.setFieldValue(37, std::string("O-CHAIN"));
        fields.setFieldValue(17, "E-" + std::to_string(position));
    } else if (replacement > 0) {
        fields.setFieldValue(35, "G");
        fields.setFieldValue(41, chainId(replacement - 1));
    }
    return message;
}

counted_ptr<ZANMessage> messageAt(OrderRun const& run, long index) {
    if (index % rareness == 0) {
        return chainMessage(index / rareness);
    }
    return EngineSide::newOrder(run.id(index), index % rareness == 1 ? "RARE" : "EURUSD");
}

/// An engine whose log has as many messages as the plan says.
class FilledEngine {
public:
    explicit FilledEngine(Plan const& plan)
        : folder_(plan.folder), peer_("ENGINE"), engine_(peer_.port(), folder_.path()) {
        OrderRun const run(plan.storedMessages);
        Messages batch;
        for (long i = 0; i < run.count(); ++i) {
            batch.push_back(messageAt(run, i));
            if (static_cast<long>(batch.size()) == batchSize || i + 1 == run.count()) {
                engine_.send(batch);
                batch.clear();
            }
        }
        peer_.waitForLast(run.lastId(), run.count());
    }

private:
    WorkFolder const folder_;
    CounterpartyProcess peer_;
    EngineSide engine_;
};

using Retrieve = std::function<void(Messages&)>;

struct Found {
    long count;
    double millis;
};

/// The median of some retrieves, the first of which finds nothing in memory.
Found find(Retrieve const& retrieve) {
    std::vector<double> times;
    std::size_t count = 0;
    for (int i = 0; i < repetitions; ++i) {
        Messages messages;
        times.push_back(secondsOf([&] { retrieve(messages); }) * 1e3);
        count = messages.size();
    }
    return {static_cast<long>(count), median(times)};
}

Row rowOf(std::string const& what, Found const& found, double bound) {
    Row row = {what + ", " + amount(static_cast<double>(found.count), "") + " hits",
               amount(found.millis, "ms"), "", "", ""};
    if (bound > 0) {
        requireAmount(row, found.millis, bound, "ms");
    }
    return row;
}

void retrieveRange(Messages& messages, long from, long to) {
    EngineSide::engine().retrieveMessagesByIdRange(EngineSide::ticket, EngineSide::connection,
                                                   messages, -1, from, to, "", false);
}

/// The time of what stands in the middle of the log, so that about `hits` messages lie in it.
std::pair<infra::Time, infra::Time> timeOfHits(Plan const& plan) {
    Messages messages;
    long const from = plan.storedMessages / 2;
    retrieveRange(messages, from, from + hits - 1);
    auto const millis = [](counted_ptr<ZANMessage> const& message) {
        return infra::Time(static_cast<std::int64_t>(std::llround(message->getTimeStamp())));
    };
    return {millis(messages.front()), millis(messages.back())};
}

Rows measureByIndex(Plan const& plan) {
    auto& engine = EngineSide::engine();
    auto const& ticket = EngineSide::ticket;
    auto const& name = EngineSide::connection;
    long const from = plan.storedMessages / 3;
    auto const times = timeOfHits(plan);
    std::string const middle =
        "id BETWEEN " + std::to_string(from) + " AND " + std::to_string(from + hits - 1);
    std::vector<int> set;
    for (long i = 0; i < hits; ++i) {
        set.push_back(static_cast<int>(1 + i * (plan.storedMessages / hits)));
    }
    std::pair<std::string, Retrieve> const searches[] = {
        {"by a range of ids",
         [&](Messages& found) { retrieveRange(found, from, from + hits - 1); }},
        {"by a set of ids",
         [&](Messages& found) {
             engine.retrieveMessagesByIdSet(ticket, name, found, -1, set, "", false);
         }},
        {"by a range of time",
         [&](Messages& found) {
             engine.retrieveMessagesByDateRange(ticket, name, found, times.first, times.second, "",
                                                false);
         }},
        {"the chain of an order",
         [&](Messages& found) {
             engine.retrieveMessageChain(ticket, name, found, {}, {chainId(0)}, false);
         }},
        {"by an expression, `id BETWEEN`", [&](Messages& found) {
             engine.retrieveMessagesByQuery(ticket, name, found, -1, middle, "", false);
         }}};
    Rows rows;
    for (auto const& [what, retrieve] : searches) {
        rows.push_back(rowOf(what, find(retrieve), mostMillis));
    }
    return rows;
}

Row measureScan() {
    return rowOf("a scan by `tag(55) = 'RARE'`", find([](Messages& found) {
                     EngineSide::engine().retrieveMessagesByQuery(EngineSide::ticket,
                                                                  EngineSide::connection, found, -1,
                                                                  "tag(55) = 'RARE'", "", false);
                 }),
                 0);
}

Rows measureRetrieve(Plan const& plan) {
    // What is kept for later, such as the pages of the log, is there before the measurement.
    constexpr double allowedShare = 1.1;
    Messages messages;
    retrieveRange(messages, 1, plan.retrievedMessages);
    messages = Messages();
    double const heapBefore = heapMiB();
    double seconds = 0;
    double const peak = peakOf(
        [&] { seconds = secondsOf([&] { retrieveRange(messages, 1, plan.retrievedMessages); }); });
    double const held = heapMiB() - heapBefore;
    std::string const what = "retrieving " + amount(static_cast<double>(messages.size()), "");
    Row memory = {"peak of the memory while " + what + " : what the vector holds then",
                  amount(peak, "MiB"), amount(held, "MiB"), "", ""};
    requireAtMost(memory, peak / held, allowedShare);
    return {{what + " messages", amount(seconds * 1e3, "ms"), "", "", ""}, memory};
}

} // namespace

Rows measureQueries(Plan const& plan) {
    FilledEngine const filled(plan);
    // What the engine does later, when it has time, is done then.
    std::this_thread::sleep_for(std::chrono::seconds(2));
    Rows rows = measureByIndex(plan);
    rows.push_back(measureScan());
    for (Row const& row : measureRetrieve(plan)) {
        rows.push_back(row);
    }
    for (Row& row : rows) {
        row.work = "of " + amount(static_cast<double>(plan.storedMessages), "") + ": " + row.work;
    }
    return rows;
}

} // namespace bench
