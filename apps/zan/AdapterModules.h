/// The adapter modules that the library would find, and whether they can be loaded.
///
/// Threads: one at a time.
#ifndef ZANENGINE_APPS_ZAN_ADAPTERMODULES_H
#define ZANENGINE_APPS_ZAN_ADAPTERMODULES_H

#include <string>
#include <vector>

namespace zan::cli {

/// One file that is called like a module.
struct FoundModule {
    std::string protocol;
    std::string file;
    /// An earlier file serves the same protocol, so this one is never used.
    bool isShadowed = false;
};

/// What became of loading one.
struct ModuleReport {
    bool isGood = false;
    /// What it was built for, in its own words; empty when it does not tell.
    std::string abi;
    /// Why it cannot be used; empty when it can.
    std::string problem;
};

/// The modules in the folders that the library looks through, in its order.
std::vector<FoundModule> findModules();

/// Loads the file in a process of its own, so that whatever it does does no harm here.
ModuleReport tryModule(std::string const& file, std::string const& protocol);

} // namespace zan::cli

#endif
