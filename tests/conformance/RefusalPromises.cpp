// How an adapter says no.
#include "conformance/Operations.h"
#include "conformance/Trial.h"
#include "errors/ZANConnectionUnknownException.h"
#include "errors/ZANEngineException.h"

namespace zan::conformance {

namespace {

// An application can do without an operation, but not without an answer.
void refusesWhatItDoesNotOffer(Trial& trial) {
    int absent = 0;
    for (Operation const& each : namedOperations()) {
        if (!trial.has(each.ability)) {
            ++absent;
            std::string const text =
                failureOf<ZANEngineException>([&] { each.call(trial.name()); });
            EXPECT_NE(text.find(each.name), std::string::npos)
                << "the refusal should name " << each.name << ": " << text;
        }
    }
    if (absent == 0) {
        GTEST_SKIP() << "the adapter offers every operation";
    }
}

void tellsWhichConnectionItDoesNotKnow(Trial& trial) {
    std::string const unknown = "NO SUCH CONNECTION";
    for (Operation const& each : namedOperations()) {
        if (trial.has(each.ability)) {
            SCOPED_TRACE(each.name);
            expectFailure<ZANConnectionUnknownException>([&] { each.call(unknown); }, unknown);
        }
    }
}

} // namespace

Promises refusalPromises() {
    return {
        {"Refusals", "NameWhatIsNotOffered", {}, refusesWhatItDoesNotOffer},
        {"Refusals",
         "NameTheConnectionThatIsUnknown",
         {Ability::Connections},
         tellsWhichConnectionItDoesNotKnow},
    };
}

} // namespace zan::conformance
