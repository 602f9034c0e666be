// The kit's promises, put to the adapters of this project.
#include "conformance/Conformance.h"
#include "conformance/tests/SessionFileContext.h"

#include <gtest/gtest.h>

#include <memory>

using namespace zan::conformance;

namespace {

MakeContext byUrl(std::string const& url, std::string const& abilities) {
    return [=] { return std::make_unique<UrlContext>(url, Abilities::parse(abilities)); };
}

} // namespace

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    registerConformance("Demo", byUrl("embedded:demo", "all,-persistence"));
    registerConformance("SessionFile", [] { return std::make_unique<SessionFileContext>(); });
    registerConformance("Template", byUrl("template:local", "none"));
    // An adapter in between that does no harm keeps what the inner one keeps.
    registerConformance("Faultless",
                        byUrl("fault:any?inner=embedded:demo", "all,-persistence,-guaranteed"));
    return RUN_ALL_TESTS();
}
