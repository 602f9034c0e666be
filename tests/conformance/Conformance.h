/// `registerConformance`: every promise that the kit knows, as tests of GoogleTest.
///
///     int main(int argc, char** argv) {
///         testing::InitGoogleTest(&argc, argv);
///         zan::conformance::registerConformance("Acme", [] {
///             return std::make_unique<zan::conformance::UrlContext>(
///                 "acme:local", zan::conformance::Abilities::parse("connections,sending"));
///         });
///         return RUN_ALL_TESTS();
///     }
#ifndef ZANENGINE_CONFORMANCE_CONFORMANCE_H
#define ZANENGINE_CONFORMANCE_CONFORMANCE_H

#include "conformance/ConformanceContext.h"

#include <string>

namespace zan::conformance {

/// Registers the tests `<name>_<group>.<promise>`; to be called before `RUN_ALL_TESTS`. `name` is
/// made of letters and digits. A promise that the context's abilities exclude is skipped and says
/// which ability it is about. Tests run one after the other, each with a context that `make` makes.
void registerConformance(std::string const& name, MakeContext const& make);

} // namespace zan::conformance

#endif
