#include "infra/DynamicMethod.h"

#include "infra/Diagnostics.h"
#include "infra/InfraException.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <dlfcn.h>
#include <filesystem>
#include <string_view>
#include <system_error>
#include <vector>

namespace {

// A folder that is named from the working folder, named from the root.
std::string fromRoot(std::string const& folder) {
    std::error_code unknown;
    auto const absolute = std::filesystem::absolute(folder, unknown);
    return unknown ? folder : absolute.string();
}

// Where the modules of this library are installed; empty when the platform cannot tell.
std::string findModuleFolder() {
#ifdef ZAN_MODULE_FOLDER
    return ZAN_MODULE_FOLDER;
#else
    static char const insideThisLibrary = 0;
    Dl_info library{};
    if (dladdr(&insideThisLibrary, &library) == 0 || !library.dli_fname) {
        return {};
    }
    auto const folder = std::filesystem::path(library.dli_fname).parent_path();
    std::error_code unknown;
    auto const real = std::filesystem::canonical(folder.empty() ? "." : folder, unknown);
    return unknown ? std::string() : (real / "zanengine").string();
#endif
}

// Never destroyed: modules are also looked for while the process ends.
std::string const& moduleFolder() {
    static auto const* const folder = new std::string(findModuleFolder());
    return *folder;
}

// The loader may know the library by a path from the working folder, which is left later.
[[gnu::constructor]] void keepModuleFolder() {
    moduleFolder();
}

// In the order in which they are tried. A name without a folder sends the loader on its own search.
std::vector<std::string> candidates(std::string const& module) {
    std::vector<std::string> files;
    for (std::string const& folder : getModuleFolders()) {
        files.push_back(folder + "/lib" + module + ".so");
        files.push_back(folder + "/" + module + ".so");
    }
    files.push_back("lib" + module + ".so");
    files.push_back(module + ".so");
    return files;
}

// What the loader says about its last failure. It often, but not always, names the file itself.
std::string loaderWords(std::string const& file) {
    char const* const error = dlerror();
    std::string const words(error ? error : "not loaded");
    return words.starts_with(file) ? words : file + ": " + words;
}

} // namespace

void* getDynamicMethod(std::string const& module, std::string const& function, bool load) {
    // Local, so that two modules may use the same names; never unloaded, because objects, listeners
    // and exceptions made by a module may outlive every call into it.
    int const flags = RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE | (load ? 0 : RTLD_NOLOAD);
    std::string tried;
    for (std::string const& file : candidates(module)) {
        if (void* const handle = dlopen(file.c_str(), flags)) {
            if (load && isDiagnosing(DiagnosticLevel::Info)) {
                diagnose(DiagnosticLevel::Info, "module", "loaded " + file);
            }
            return dlsym(handle, function.c_str());
        }
        tried += "\n  " + loaderWords(file);
    }
    throw InfraException("Cannot find method \"" + function + "\". No module \"" + module + "\" " +
                         (load ? "could be loaded:" : "is loaded:") + tried);
}

std::vector<std::string> getModuleFolders() {
    std::vector<std::string> folders;
    char const* const path = secure_getenv("ZAN_ADAPTER_PATH");
    std::string_view rest(path ? path : "");
    while (!rest.empty()) {
        std::string_view const folder = rest.substr(0, rest.find(':'));
        if (!folder.empty()) {
            folders.push_back(fromRoot(std::string(folder)));
        }
        rest.remove_prefix(std::min(rest.size(), folder.size() + 1));
    }
    if (!moduleFolder().empty()) {
        folders.push_back(moduleFolder());
    }
    return folders;
}
