#include "conformance/Conformance.h"

#include "conformance/Trial.h"

#include <deque>

namespace zan::conformance {

namespace {

Promises allPromises() {
    Promises all;
    for (Promises (*const group)() :
         {lifeCyclePromises, refusalPromises, connectionPromises, sendingPromises,
          manyAtOncePromises, eventPromises, directPromises, sessionPromises, counterpartyPromises,
          logPromises, expressionPromises, editPromises, guaranteedPromises}) {
        Promises const more = group();
        all.insert(all.end(), more.begin(), more.end());
    }
    return all;
}

} // namespace

void registerConformance(std::string const& name, MakeContext const& make) {
    static Promises const promises = allPromises();
    // GoogleTest keeps what makes the tests until the end of the program.
    static std::deque<MakeContext> kept;
    MakeContext const& itsOwn = kept.emplace_back(make);
    for (Promise const& promise : promises) {
        testing::RegisterTest((name + "_" + promise.group).c_str(), promise.name, nullptr, nullptr,
                              promise.file, promise.line,
                              [&promise, &itsOwn] { return new Trial(promise, itsOwn); });
    }
}

} // namespace zan::conformance
