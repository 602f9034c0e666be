// Puts the promises of the adapter kit to the adapter.
#include "conformance/Conformance.h"

#include <gtest/gtest.h>

#include <memory>

namespace {

using namespace zan::conformance;

/// What the adapter can do by now, and the URL that starts it.
std::unique_ptr<ConformanceContext> makeContext() {
    Abilities const abilities = Abilities::parse("none");
    return std::make_unique<UrlContext>("template:local?connections=A,B", abilities);
}

} // namespace

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    registerConformance("Template", makeContext);
    return RUN_ALL_TESTS();
}
