/// `getDynamicMethod`: finds a function by name in a module that is loaded by name;
/// `getModuleFolders`: where it looks.
///
/// Threads: any thread may call it, also at the same time as others. A module's initialisation runs
/// on the calling thread.
#ifndef ZANENGINE_INFRA_DYNAMICMETHOD_H
#define ZANENGINE_INFRA_DYNAMICMETHOD_H

#include "infra/Export.h"

#include <string>
#include <vector>

/// Returns the address of `function` in `module`, or null when the module has no such function.
/// The caller converts the address to the function's true type. The address stays good until the
/// end of the process, because a module is never unloaded.
///
/// `load` says whether the module may be loaded; without it only modules that are in the process
/// already are looked at.
///
/// A module is the file `lib<module>.so` or else `<module>.so`. It is looked for in the folders of
/// the environment variable `ZAN_ADAPTER_PATH` (separated by colons; an empty entry names none, a
/// relative one counts from the working folder of the moment; not read in a program that runs with
/// more rights than its user), then in the folder where the library's own modules are
/// installed, then in the places that the platform searches. A file that cannot be loaded does not
/// end the search.
///
/// Throws `InfraException` when no module was found. Its message begins with
/// `Cannot find method "<function>".` and goes on with one line for each place that was tried, in
/// the loader's own words.
ZAN_API void* getDynamicMethod(std::string const& module, std::string const& function, bool load);

/// The folders in which modules are looked for before the places that the platform searches, in
/// that order, each from the root. They need not exist.
ZAN_API std::vector<std::string> getModuleFolders();

#endif
